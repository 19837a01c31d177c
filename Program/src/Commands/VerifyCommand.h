#pragma once

#include <optional>
#include <string>

#include "Commands/Command.h"
#include "Lens/LensOptions.h"

namespace Program {

/// `verify`: how exactly undistorting and distorting again restores a frame.
class VerifyCommand : public Command {
public:
    std::string name() const override { return "verify"; }
    std::string summary() const override { return "Measure how accurately a correction can be undone"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;

    /// SomeFramesFailed if a frame cannot be verified or misses by more than the tolerance.
    ExitCode run() override;

private:
    LensOptionsReader m_lens;
    std::optional<double> m_tolerance;
    bool m_isRendered = false;
    bool m_withFrames = false;
    bool m_asJson = false;
};

} // namespace Program
