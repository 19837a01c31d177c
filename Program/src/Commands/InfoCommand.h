#pragma once

#include <string>

#include "Chain/LensDataOptions.h"
#include "Clip/DecodingOptions.h"
#include "Commands/Command.h"

namespace Program {

/// `info`: what a correction file holds or what belongs to a clip, and how the frames are corrected.
class InfoCommand : public Command {
public:
    std::string name() const override { return "info"; }
    std::string summary() const override { return "Show how each frame will be corrected, or why it cannot be"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;

    /// SomeFramesFailed if a frame cannot be corrected.
    ExitCode run() override;

private:
    std::string m_path;  ///< a correction file or a clip
    std::string m_range; ///< empty: all frames
    LensDataOptionsReader m_lensData;
    DecodingOptionsReader m_decoding;
    bool m_withFrames = false;
    bool m_asJson = false;
};

} // namespace Program
