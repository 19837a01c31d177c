#include "Chain/LensDataOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

#include "Frame.h"
#include "Report/Failure.h"

namespace Tools {

std::string LensDataOptions::pixelAspectObjection(const Image::Frame& frame) const {
    // Files keep the ratio as a quotient or in single precision; a whole picture of 8192 px shows less than this.
    constexpr float rounding = 1e-4f;
    if (ignoresPixelAspect) return {};
    for (const Image::Part& part : frame.parts) {
        if (std::abs(part.pixelAspectRatio - 1.0f) <= rounding) continue;
        return fmt::format(
            "The pixels are not square (pixel aspect ratio {:g}), but the lens model is radial in square pixels. "
            "Resample the picture to square pixels first, or give --pixel-aspect ignore to correct it as it is.",
            part.pixelAspectRatio);
    }
    return {};
}

void LensDataOptionsReader::declareOptions(CLI::App& app) {
    app.add_option("--correction-file", m_correctionFile, "Use this file instead of searching near the clip");
    app.add_option("--image-area", m_imageArea, "Recording format: sensor area in mm, WxH; requires --clip-resolution");
    app.add_option("--clip-resolution", m_clipResolution,
                   "Recording format: clip resolution in px, WxH; requires --image-area");
    app.add_option(
        "--overscan", m_overscan,
        "Overscan included in the format, in percent; default: overscan is outside the format, in the data window");
    app.add_option("--pixel-aspect", m_pixelAspect,
                   "ignore: treat non-square pixels as square instead of refusing them")
        ->check(CLI::IsMember({"ignore"}));
}

LensDataOptions LensDataOptionsReader::read() const {
    LensDataOptions options;
    if (!m_correctionFile.empty()) options.correctionFile = m_correctionFile;
    if (m_imageArea.empty() != m_clipResolution.empty())
        refuse("--image-area and --clip-resolution must be given together.");
    if (!m_imageArea.empty()) {
        options.imageArea = parseMillimetreSize("--image-area", m_imageArea);
        options.clipResolution = parsePixelSize("--clip-resolution", m_clipResolution);
        // The nodes' controls end there.
        if (options.imageArea->width > 36.0f || options.imageArea->height > 24.0f)
            refuse(fmt::format("--image-area {} is larger than 36x24 mm, the largest supported sensor.", m_imageArea));
        if (options.clipResolution->width > 7680 || options.clipResolution->height > 4320)
            refuse(
                fmt::format("--clip-resolution {} is larger than 7680x4320 px, the largest supported clip; give a "
                            "smaller one of the same aspect ratio.",
                            m_clipResolution));
    }
    if (m_overscan && !(*m_overscan >= 0.0f && *m_overscan <= 1000.0f)) {
        refuse(fmt::format("--overscan {} is not between 0 and 1000 percent.", *m_overscan));
    }
    options.overscan = m_overscan;
    options.ignoresPixelAspect = !m_pixelAspect.empty();
    return options;
}

} // namespace Tools
