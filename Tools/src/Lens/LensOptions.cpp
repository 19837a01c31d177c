#include "Lens/LensOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "Report/Failure.h"

namespace Tools {

struct LensOptionsReader::Texts {
    std::string input, size, plate, frames;
    LensDataOptionsReader lensData;
    DecodingOptionsReader decoding;
};

namespace {

bool isCorrectionFile(const std::string& path) {
    return path.size() > 5 && path.compare(path.size() - 5, 5, ".olcf") == 0;
}

} // namespace

LensOptionsReader::LensOptionsReader() : m_texts(std::make_unique<Texts>()) {}

LensOptionsReader::~LensOptionsReader() = default;

void LensOptionsReader::declareOptions(CLI::App& app) {
    Texts& t = *m_texts;
    app.add_option("CLIP", t.input, "Movie, file pattern, picture file or folder; or, with --size, a correction file")
        ->required();
    app.add_option("--size", t.size, "Frame size in px, WxH, if CLIP is a correction file (.olcf)");
    app.add_option("--plate", t.plate, "Take lens data from this clip, and only sizes from CLIP");
    t.lensData.declareOptions(app);
    app.add_option("--frames", t.frames, "Frame range such as 1001-1100x2,1200; default: all frames");
    t.decoding.declareOptions(app);
}

LensOptions LensOptionsReader::read() const {
    const Texts& t = *m_texts;
    LensOptions options;
    options.input = t.input;
    if (!t.size.empty()) options.size = parsePixelSize("--size", t.size);
    if (!t.plate.empty()) options.plate = t.plate;
    static_cast<LensDataOptions&>(options) = t.lensData.read();
    if (!t.frames.empty()) options.frames = FrameRange::parse(t.frames);
    options.decoding = t.decoding.read();
    if (options.size && (options.plate || options.correctionFile)) {
        refuse("--size applies only to a correction file; omit --plate and --correction-file.");
    }
    if (!options.size && isCorrectionFile(options.input)) {
        refuse(fmt::format("{}: a correction file does not contain the frame size; give --size WxH.", options.input));
    }
    return options;
}

} // namespace Tools
