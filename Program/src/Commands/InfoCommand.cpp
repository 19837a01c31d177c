#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Info/ClipInfo.h"
#include "Options.h"
#include "Report/Dimensions.h"
#include "Report/Failure.h"
#include "Report/Json.h"
#include "Report/PrintableText.h"

namespace Program {

using namespace Tools;

namespace {

using RecordingFormatDatabase::RecordingFormat;

std::optional<RecordingFormat> manualFormat(const InfoOptions& options) {
    if (!options.imageArea) return std::nullopt;
    const MillimetreSize& area = *options.imageArea;
    const PixelSize& clip = *options.clipResolution;
    return RecordingFormat{area.width, area.height, clip.width, clip.height, std::hypot(area.width, area.height) / 2};
}

InfoReport reportOn(const InfoOptions& options) {
    const bool isCorrectionFile = std::filesystem::path(options.path).extension() == ".olcf";
    if (!isCorrectionFile) return clipInfo(options);
    const char* const ofClips = options.correctionFile       ? "--correction-file"
                                : options.overscan           ? "--overscan"
                                : options.ignoresPixelAspect ? "--pixel-aspect"
                                                             : nullptr;
    if (ofClips) refuse(fmt::format("{} applies to a clip, not to a correction file.", ofClips));
    return fileInfo(options.path, manualFormat(options), options.frames);
}

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

} // namespace

std::string InfoCommand::example() const {
    return "  lenscorrect info A001C002.olcf\n"
           "  lenscorrect info /shots/A001C002.%04d.exr --range 1001-1010 --frames\n"
           "  lenscorrect info A001C002.olcf --frames --json";
}

void InfoCommand::declareOptions(CLI::App& app) {
    app.add_option("PATH", m_path, "Correction file (.olcf), or a clip: movie, file pattern, picture file, or folder")
        ->required();
    m_lensData.declareOptions(app);
    app.add_option("--range", m_range, "Frame range such as 1001-1100x2,1200; default: all frames");
    app.add_flag("--frames", m_withFrames, "Report each frame");
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/info.json)");
    m_decoding.declareOptions(app);
}

ExitCode InfoCommand::run() {
    InfoOptions options;
    static_cast<LensDataOptions&>(options) = m_lensData.read();
    options.path = m_path;
    options.decoding = m_decoding.read();
    if (!m_range.empty()) options.frames = FrameRange::parse(m_range);
    const InfoReport report = reportOn(options);
    if (m_asJson) {
        fmt::print("{}\n", jsonText(report.json(m_withFrames)));
    } else {
        fmt::print("{}", printableText(report.text(m_withFrames)));
    }
    return report.failedCount() == 0 ? ExitCode::Done : ExitCode::SomeFramesFailed;
}

std::unique_ptr<Command> makeInfoCommand() { return std::make_unique<InfoCommand>(); }

} // namespace Program
