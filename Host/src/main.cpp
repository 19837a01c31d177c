#include "Commands/CommandLine.h"
#include "Image/Sandbox/DecoderProcess.h"
#include "Image/Sandbox/DecoderServer.h"
#include "Output/Interruption.h"

int main(int argumentCount, char** arguments) {
    if (HostImage::DecoderProcess::isMeant(argumentCount, arguments))
        HostImage::DecoderProcess::run(argumentCount, arguments);
    if (HostImage::DecoderServer::isMeant(argumentCount, arguments)) HostImage::DecoderServer::run();
    Host::Interruption::install();
    return static_cast<int>(Host::runCommandLine(argumentCount, arguments));
}
