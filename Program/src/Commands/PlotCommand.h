#pragma once

#include <string>

#include "Commands/Command.h"

namespace Program {

/// `plot`: pictures of a correction file's curves.
class PlotCommand : public Command {
public:
    std::string name() const override { return "plot"; }
    std::string summary() const override { return "Plot a correction file's curves as HTML or SVG"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_path;
    std::string m_outputPath; ///< its extension chooses the format
};

} // namespace Program
