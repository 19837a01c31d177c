#include "Render/LensDataOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "Console/Failure.h"

namespace Host {

namespace {

[[noreturn]] void refuse(const std::string& text) { throw Failure(ExitCode::WrongUse, text); }

} // namespace

void LensDataOptionsReader::declareOptions(CLI::App& app) {
    app.add_option("--correction-file", m_correctionFile, "Use this file instead of the one found around the clip");
    app.add_option("--image-area", m_imageArea, "Recording format: sensor area in mm, WxH; needs --clip-resolution");
    app.add_option("--clip-resolution", m_clipResolution, "Recording format: clip in px, WxH; needs --image-area");
    app.add_option("--overscan", m_overscan,
                   "Overscan inside the format, in percent; without it the data window is the overscan");
}

LensDataOptions LensDataOptionsReader::read() const {
    LensDataOptions options;
    if (!m_correctionFile.empty()) options.correctionFile = m_correctionFile;
    if (m_imageArea.empty() != m_clipResolution.empty()) refuse("--image-area and --clip-resolution belong together.");
    if (!m_imageArea.empty()) {
        options.imageArea = parseMillimetreSize("--image-area", m_imageArea);
        options.clipResolution = parsePixelSize("--clip-resolution", m_clipResolution);
        // The nodes' controls end there.
        if (options.imageArea->width > 36.0f || options.imageArea->height > 24.0f)
            refuse(fmt::format("--image-area {} is larger than 36x24 mm, the largest sensor that is supported.",
                               m_imageArea));
        if (options.clipResolution->width > 7680 || options.clipResolution->height > 4320)
            refuse(
                fmt::format("--clip-resolution {} is larger than 7680x4320 px, the largest clip that is supported "
                            "here; give a smaller one of the same aspect ratio.",
                            m_clipResolution));
    }
    if (m_overscan && !(*m_overscan >= 0.0f && *m_overscan <= 1000.0f)) {
        refuse(fmt::format("--overscan {} is not between 0 and 1000 percent.", *m_overscan));
    }
    options.overscan = m_overscan;
    return options;
}

} // namespace Host
