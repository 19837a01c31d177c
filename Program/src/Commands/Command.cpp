#include "Commands/Command.h"

#include "Commands/CheckCommand.h"
#include "Commands/DevicesCommand.h"
#include "Commands/ExportCommand.h"
#include "Commands/FindCommand.h"
#include "Commands/FormatsCommand.h"
#include "Commands/HelpCommand.h"
#include "Commands/InfoCommand.h"
#include "Commands/PlotCommand.h"
#include "Commands/RenderCommand.h"
#include "Commands/SampleCommand.h"
#include "Commands/StMapCommand.h"
#include "Commands/SubmitCommand.h"
#include "Commands/SummaryCommand.h"
#include "Commands/VerifyCommand.h"

namespace Program {

using namespace Tools;

Command::~Command() = default;

std::vector<std::unique_ptr<Command>> allCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<RenderCommand>());
    commands.push_back(std::make_unique<SampleCommand>());
    commands.push_back(std::make_unique<FindCommand>());
    commands.push_back(std::make_unique<InfoCommand>());
    commands.push_back(std::make_unique<CheckCommand>());
    commands.push_back(std::make_unique<PlotCommand>());
    commands.push_back(std::make_unique<ExportCommand>());
    commands.push_back(std::make_unique<StMapCommand>());
    commands.push_back(std::make_unique<VerifyCommand>());
    commands.push_back(std::make_unique<FormatsCommand>());
    commands.push_back(std::make_unique<DevicesCommand>());
    commands.push_back(std::make_unique<SubmitCommand>());
    commands.push_back(std::make_unique<SummaryCommand>());
    commands.push_back(std::make_unique<HelpCommand>());
    return commands;
}

} // namespace Program
