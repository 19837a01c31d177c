#pragma once

#include <string>

#include "Commands/Command.h"

namespace Program {

/// `export`: a correction file's lens data for other programs.
class ExportCommand : public Command {
public:
    std::string name() const override { return "export"; }
    std::string summary() const override { return "Write a correction file's lens data for other programs"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;

    /// SomeFramesFailed if the curves of a frame cannot be fitted; the others are written.
    ExitCode run() override;

private:
    std::string m_path;
    std::string m_outputPath;
    bool m_asOpenTrackIo = false;
};

} // namespace Program
