#include "Commands/CommandLine.h"
#include "Image/Sandbox/CodecProcess.h"
#include "Image/Sandbox/CodecServer.h"
#include "Output/Interruption.h"

int main(int argumentCount, char** arguments) {
    if (HostImage::CodecProcess::isMeant(argumentCount, arguments))
        HostImage::CodecProcess::run(argumentCount, arguments);
    if (HostImage::CodecServer::isMeant(argumentCount, arguments)) HostImage::CodecServer::run();
    Host::Interruption::install();
    return static_cast<int>(Host::runCommandLine(argumentCount, arguments));
}
