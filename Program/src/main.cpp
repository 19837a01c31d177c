#include "CommandLine.h"
#include "Sandbox/CodecProcess.h"
#include "Sandbox/CodecServer.h"
#include "System/Interruption.h"

int main(int argumentCount, char** arguments) {
    if (Image::CodecProcess::isMeant(argumentCount, arguments)) Image::CodecProcess::run(argumentCount, arguments);
    if (Image::CodecServer::isMeant(argumentCount, arguments)) Image::CodecServer::run();
    Tools::Interruption::install();
    return static_cast<int>(Program::runCommandLine(argumentCount, arguments));
}
