#include "Commands/CommandLine.h"
#include "Output/Interruption.h"

int main(int argumentCount, char** arguments) {
    Host::Interruption::install();
    return static_cast<int>(Host::runCommandLine(argumentCount, arguments));
}
