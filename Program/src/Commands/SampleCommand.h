#pragma once

#include <cstdint>

#include "Commands/Command.h"

namespace Program {

/// `sample`: a clip to try the program on, whose correction is known exactly.
class SampleCommand : public Command {
public:
    std::string name() const override { return "sample"; }
    std::string summary() const override {
        return "Write a sample clip with its correction file and a clean reference";
    }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_folder;
    std::int32_t m_frameCount = 24;
    std::string m_size = "1920x1080";
    std::string m_progress = "auto";
};

} // namespace Program
