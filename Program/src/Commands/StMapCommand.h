#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Commands/Command.h"
#include "Lens/LensOptions.h"
#include "Map/MapJob.h"

namespace Program {

/// `stmap`: displacement maps that other programs warp with.
class StMapCommand : public Command {
public:
    std::string name() const override { return "stmap"; }
    std::string summary() const override { return "Write displacement maps (STMaps) for other programs"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;

    /// SomeFramesFailed if a frame has no map.
    ExitCode run() override;

private:
    MapOptions options() const;

    LensOptionsReader m_lens;
    std::string m_output;
    std::string m_direction;
    std::string m_geometry = "node";
    std::string m_origin = "bottom";
    std::string m_centre = "half";
    std::string m_channels = "single";
    std::string m_progress = "auto";
    std::optional<std::int32_t> m_frame;
    bool m_overwrite = false;
};

} // namespace Program
