#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "Map/MapJob.h"
#include "Options.h"
#include "Progress.h"
#include "Report/Failure.h"
#include "System/RenderingDevice.h"

namespace Program {

using namespace Tools;

namespace {

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
    std::string m_device;
    bool m_overwrite = false;
};

} // namespace

std::string StMapCommand::example() const {
    return "  lenscorrect stmap plate.%04d.exr --direction undistort -o maps/undistort.%04d.exr\n"
           "  lenscorrect stmap A001C002.olcf --size 4096x2160 --direction redistort --frame 0 -o redistort.exr";
}

void StMapCommand::declareOptions(CLI::App& app) {
    m_lens.declareOptions(app);
    app.add_option("-o,--output", m_output, "File pattern (.exr), or one file if all frames have the same map")
        ->required();
    app.add_option("--direction", m_direction, "undistort removes the lens's distortion, redistort restores it")
        ->check(CLI::IsMember({"undistort", "redistort"}))
        ->required();
    app.add_option("--frame", m_frame, "Write only this frame's map; one file then serves all frames");
    app.add_option("--geometry", m_geometry,
                   "node: as the node samples; ideal: one scale in px per mm, whatever the frame size")
        ->check(CLI::IsMember({"node", "ideal"}))
        ->capture_default_str();
    app.add_option("--origin", m_origin, "Edge where the vertical coordinate is 0")
        ->check(CLI::IsMember({"bottom", "top"}))
        ->capture_default_str();
    app.add_option("--centre", m_centre, "half: (x + 0.5) / W; none: x / W; corner: x / (W - 1)")
        ->check(CLI::IsMember({"half", "none", "corner"}))
        ->capture_default_str();
    app.add_option("--channels", m_channels,
                   "single: B = 0, A = 1; twice: B, A repeat R, G; both: B, A hold the opposite direction")
        ->check(CLI::IsMember({"single", "twice", "both"}))
        ->capture_default_str();
    declareDevice(app, m_device);
    app.add_flag("--overwrite", m_overwrite, "Replace existing files");
    app.add_option("--progress", m_progress, "auto, bar, lines, json or none")->capture_default_str();
}

MapOptions StMapCommand::options() const {
    MapOptions options;
    options.lens = m_lens.read();
    if (m_frame) {
        if (options.lens.frames) {
            refuse("--frame and --frames cannot be combined.");
        }
        options.lens.frames = FrameRange::fromStartToEnd(*m_frame, *m_frame);
    }
    options.content.direction = m_direction == "undistort" ? Direction::Undistort : Direction::Redistort;
    options.content.geometry = m_geometry == "node" ? Geometry::Node : Geometry::Ideal;
    MapConvention& convention = options.content.convention;
    convention.origin = m_origin == "bottom" ? MapConvention::Origin::Bottom : MapConvention::Origin::Top;
    convention.centre = m_centre == "half"   ? MapConvention::Centre::Half
                        : m_centre == "none" ? MapConvention::Centre::None
                                             : MapConvention::Centre::Corner;
    convention.channels = m_channels == "single"  ? MapConvention::Channels::Single
                          : m_channels == "twice" ? MapConvention::Channels::Twice
                                                  : MapConvention::Channels::Both;
    options.output = FilePattern::parse(m_output, FilePattern::Use::Output);
    if (m_output.size() < 5 || m_output.compare(m_output.size() - 4, 4, ".exr") != 0) {
        refuse(fmt::format("{}: maps are written as OpenEXR files; the name must end in .exr.", m_output));
    }
    options.overwrite = m_overwrite;
    return options;
}

ExitCode StMapCommand::run() {
    const MapOptions mapOptions = options();
    const RenderingDevice device(m_device);
    tell(device.notice());
    MapJob job(mapOptions);
    device.check();
    job.check();
    if (job.isOneMap()) return exitCodeOf(job.run({}));
    Progress progress(m_progress, job.frames().size());
    const JobResult result = job.run(progress.listener());
    progress.end(mapOptions.output.string());
    tellEnd(result, job.frames().size(),
            result.left.empty() ? ""
                                : fmt::format("Stopped. Run the same command with --frames={} to continue.",
                                              FrameRange::string(result.left)));
    return exitCodeOf(result);
}

std::unique_ptr<Command> makeStMapCommand() { return std::make_unique<StMapCommand>(); }

} // namespace Program
