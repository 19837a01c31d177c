#include "Map/LensOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

#include "Console/Failure.h"

namespace Host {

struct LensOptionsReader::Texts {
    std::string input, size, plate, correctionFile, imageArea, clipResolution, frames;
    std::optional<float> overscan;
};

namespace {

[[noreturn]] void refuse(const std::string& text) { throw Failure(ExitCode::WrongUse, text); }

/// An option that was not given has an empty text.
std::optional<std::string> given(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

bool isCorrectionFile(const std::string& path) {
    return path.size() > 5 && path.compare(path.size() - 5, 5, ".olcf") == 0;
}

} // namespace

LensOptionsReader::LensOptionsReader() : m_texts(std::make_unique<Texts>()) {}

LensOptionsReader::~LensOptionsReader() = default;

void LensOptionsReader::declareOptions(CLI::App& app) {
    Texts& t = *m_texts;
    app.add_option("CLIP", t.input, "Movie, file pattern, picture file or folder; with --size a correction file")
        ->required();
    app.add_option("--size", t.size, "Frame size in px, WxH, where CLIP is a correction file (.olcf)");
    app.add_option("--plate", t.plate, "Take the lens data from this clip; CLIP gives sizes only");
    app.add_option("--correction-file", t.correctionFile, "Use this correction file instead of searching");
    app.add_option("--image-area", t.imageArea, "Recording format: sensor area in mm, WxH; needs --clip-resolution");
    app.add_option("--clip-resolution", t.clipResolution, "Recording format: clip in px, WxH; needs --image-area");
    app.add_option("--overscan", t.overscan,
                   "The format holds this overscan, in percent (without it: the data window)");
    app.add_option("--frames", t.frames, "Frames, as 1001-1100x2,1200 (without it: all)");
}

LensOptions LensOptionsReader::read() const {
    const Texts& t = *m_texts;
    LensOptions options;
    options.input = t.input;
    if (!t.size.empty()) options.size = parsePixelSize("--size", t.size);
    options.plate = given(t.plate);
    options.correctionFile = given(t.correctionFile);
    if (t.imageArea.empty() != t.clipResolution.empty()) refuse("--image-area and --clip-resolution belong together.");
    if (!t.imageArea.empty()) {
        options.imageArea = parseMillimetreSize("--image-area", t.imageArea);
        options.clipResolution = parsePixelSize("--clip-resolution", t.clipResolution);
    }
    options.overscan = t.overscan;
    if (options.overscan &&
        !(std::isfinite(*options.overscan) && *options.overscan >= 0.0f && *options.overscan <= 1000.0f)) {
        refuse(fmt::format("--overscan {}: give a percentage from 0 to 1000.", *options.overscan));
    }
    if (!t.frames.empty()) options.frames = FrameRange::parse(t.frames);
    if (options.size && (options.plate || options.correctionFile)) {
        refuse("--size is for a correction file alone; leave --plate and --correction-file.");
    }
    if (!options.size && isCorrectionFile(options.input)) {
        refuse(
            fmt::format("{}: a correction file does not say how large the frames are that the map is for; give "
                        "--size WxH.",
                        options.input));
    }
    return options;
}

} // namespace Host
