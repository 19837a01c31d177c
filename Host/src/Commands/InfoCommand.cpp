#include "Commands/InfoCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>

#include "Console/Dimensions.h"
#include "Console/Failure.h"
#include "Inspect/FileInfo.h"

namespace Host {
namespace {

using RecordingFormatDatabase::RecordingFormat;

std::optional<RecordingFormat> manualFormat(const std::string& imageArea, const std::string& clipResolution) {
    if (imageArea.empty() != clipResolution.empty()) {
        throw Failure(ExitCode::WrongUse, "--image-area and --clip-resolution belong together.");
    }
    if (imageArea.empty()) return std::nullopt;
    const MillimetreSize area = parseMillimetreSize("--image-area", imageArea);
    const PixelSize clip = parsePixelSize("--clip-resolution", clipResolution);
    return RecordingFormat{area.width, area.height, clip.width, clip.height, std::hypot(area.width, area.height) / 2};
}

} // namespace

std::string InfoCommand::example() const {
    return "  lenscorrect info A001C002.olcf\n"
           "  lenscorrect info A001C002.olcf --frames --json";
}

void InfoCommand::declareOptions(CLI::App& app) {
    app.add_option("FILE", m_path, "Correction file")->required();
    app.add_option("--image-area", m_imageArea, "Recording format: sensor area in mm, WxH; needs --clip-resolution");
    app.add_option("--clip-resolution", m_clipResolution, "Recording format: clip in px, WxH; needs --image-area");
    app.add_flag("--frames", m_withFrames, "Tell it for each frame");
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/info.json)");
}

ExitCode InfoCommand::run() {
    const InfoReport report = fileInfo(m_path, manualFormat(m_imageArea, m_clipResolution));
    if (m_asJson) {
        fmt::print("{}\n", report.json(m_withFrames).dump(1, ' ', false, nlohmann::json::error_handler_t::replace));
    } else {
        fmt::print("{}", report.text(m_withFrames));
    }
    return report.failedCount() == 0 ? ExitCode::Done : ExitCode::SomeFramesFailed;
}

} // namespace Host
