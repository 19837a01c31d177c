#include "Commands/CommandLine.h"
#include "Image/Sandbox/DecoderProcess.h"
#include "Output/Interruption.h"

int main(int argumentCount, char** arguments) {
    if (HostImage::DecoderProcess::isMeant(argumentCount, arguments))
        HostImage::DecoderProcess::run(argumentCount, arguments);
    Host::Interruption::install();
    return static_cast<int>(Host::runCommandLine(argumentCount, arguments));
}
