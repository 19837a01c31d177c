#include "Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

#include "FrameWriter.h"
#include "Report/Dimensions.h"
#include "Report/Failure.h"

namespace Program {

using namespace Tools;

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

namespace {

/// Sixteen half or eight float channels in each pixel of the largest picture; and no less than without the option.
constexpr std::int64_t bytesPerPixel = 32;
/// Less, and the program itself does not start.
constexpr std::uint64_t leastMemory = std::uint64_t{256} << 20;

Image::Limits limitsOf(const std::string& text) {
    Image::Limits limits;
    constexpr std::int64_t longest = 1 << 24; // beyond it, single precision does not tell pixels apart
    std::int64_t width = 0, height = 0;
    const char* const end = text.data() + text.size();
    const auto [cross, widthError] = std::from_chars(text.data(), end, width);
    bool isSize = widthError == std::errc() && cross != end && *cross == 'x';
    if (isSize) {
        const auto [rest, heightError] = std::from_chars(cross + 1, end, height);
        isSize = heightError == std::errc() && rest == end;
    }
    if (!isSize || std::min(width, height) < 1 || std::max(width, height) > longest)
        refuse("--max-image " + text + " is not a size such as 65536x8192, each side 1 to 16777216.");
    limits.maxSide = std::max(width, height);
    limits.maxPixels = width * height;
    limits.maxBytes = std::max(limits.maxBytes, limits.maxPixels * bytesPerPixel);
    return limits;
}

} // namespace

void DecodingOptionsReader::declareOptions(CLI::App& app) {
    CLI::Option_group& group = *app.add_option_group("Untrusted files");
    group.add_option("--max-image", m_maxImage,
                     "Refuse files with more pixels than WxH, or with a side longer than the larger value; default: "
                     "65536x8192");
    group
        .add_flag("--sandbox{on}", m_sandbox,
                  "Decode each frame in a separate, confined process; --sandbox=auto (default): all files but EXR; "
                  "--sandbox=off: none. Unless off, DPX, TIFF, PNG and JPEG are encoded in one too")
        ->check(CLI::IsMember({"auto", "on", "off"}));
    group.add_option("--sandbox-memory", m_memory, "Memory limit of that process; default: 8G");
    group.add_option("--sandbox-time", m_seconds, "Time limit per frame in seconds; default: 60")
        ->check(CLI::Range(1, 86400));
}

DecodingOptions DecodingOptionsReader::read() const {
    DecodingOptions options;
    if (!m_maxImage.empty()) options.limits = limitsOf(m_maxImage);
    using Sandbox = DecodingOptions::Sandbox;
    options.sandbox = m_sandbox == "on" ? Sandbox::On : m_sandbox == "off" ? Sandbox::Off : Sandbox::Auto;
    if (options.sandbox == Sandbox::Off && (!m_memory.empty() || m_seconds))
        refuse("--sandbox-memory and --sandbox-time cannot be combined with --sandbox=off.");
    if (!m_memory.empty()) options.sandboxLimits.memory = parseMemorySize(m_memory);
    if (options.sandboxLimits.memory < leastMemory) refuse("--sandbox-memory " + m_memory + " is less than 256M.");
    if (m_seconds) options.sandboxLimits.seconds = *m_seconds;
    return options;
}

void declareDevice(CLI::App& app, std::string& name) {
    app.add_option("--device", name,
                   "OpenCL device that renders: a part of its name or its driver's; default: the most powerful "
                   "one (lenscorrect devices)");
}

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

struct RenderOptionsReader::Texts {
    std::string clip, output, distortion, shading, shadingLayers, plate, frames, pixelType, compression, memory,
        inputSpace, colourConfig, device;
    std::string zip = "fast";
    std::string window = "box";
    std::string boxSize;
    std::string progress = "auto";
    bool renderMap = false, skipExisting = false, overwrite = false, keepGoing = false, stopOnError = false,
         strict = false, force = false;
    std::optional<std::int32_t> start, end, step;
    unsigned int threads = 0;
    LensDataOptionsReader lensData;
    DecodingOptionsReader decoding;
};

namespace {

/// An option that was not given has an empty text; one that was given empty is refused by the parser already.
std::optional<std::string> given(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

std::optional<FrameRange> framesOf(const std::string& list, std::optional<std::int32_t> start,
                                   std::optional<std::int32_t> end, std::optional<std::int32_t> step) {
    if (!list.empty()) {
        if (start || end || step) refuse("--frames cannot be combined with --start, --end or --step.");
        return FrameRange::parse(list);
    }
    if (!start && !end && !step) return std::nullopt;
    if (!start || !end) refuse("--start and --end must be given together.");
    return FrameRange::fromStartToEnd(*start, *end, step.value_or(1));
}

/// A name that no picture can have would otherwise fail every frame once it is corrected.
void checkFormatOf(const FilePattern& output) {
    const std::string name = output.path(1);
    try {
        Image::checkOutputName(name);
    } catch (const Image::ImageError& error) {
        refuse(output.string() + std::string(error.what()).substr(name.size()));
    }
}

} // namespace

RenderOptionsReader::RenderOptionsReader() : m_texts(std::make_unique<Texts>()) {}

RenderOptionsReader::~RenderOptionsReader() = default;

void RenderOptionsReader::declareOptions(CLI::App& app) {
    Texts& t = *m_texts;
    app.add_option("CLIP", t.clip, "Movie, file pattern (%04d, ####), picture file, or folder with one sequence")
        ->required();
    app.add_option("-o,--output", t.output, "File pattern or file to write; missing folders are created")->required();

    CLI::Option_group& correction =
        *app.add_option_group("Correction", "At least one of --distortion and --shading is required");
    correction.add_option("--distortion", t.distortion, "undistort removes the lens's distortion, distort applies it")
        ->check(CLI::IsMember({"undistort", "distort"}));
    correction.add_option("--shading", t.shading, "remove removes the lens's shading, add applies it")
        ->check(CLI::IsMember({"remove", "add"}));
    correction.add_option("--shading-layers", t.shadingLayers,
                          "Shade the layers that match these patterns, such as \"rgba,light_*\" or \"*,!N\"; default: "
                          "layers whose names indicate colour");
    correction.add_flag("--map", t.renderMap, "Write the correction's map instead of the picture");

    CLI::Option_group& colour =
        *app.add_option_group("Colour", "EXR files are taken as linear unless they declare otherwise");
    CLI::Option* const inputSpace = colour.add_option(
        "--input-space", t.inputSpace,
        "Colour space of CLIP; corrects in linear light and writes the same space; raw: correct the values as "
        "they are");
    colour.add_option("--ocio", t.colourConfig, "OpenColorIO configuration; default: $OCIO, else the built-in one")
        ->needs(inputSpace);

    CLI::Option_group& lens = *app.add_option_group("Lens data");
    lens.add_option("--plate", t.plate, "CLIP is CG; take lens data from this plate");
    t.lensData.declareOptions(lens);

    CLI::Option_group& range = *app.add_option_group("Frames", "Default: all existing frames");
    range.add_option("--frames", t.frames, "Frame range such as 1001-1100x2,1200");
    range.add_option("--start", t.start, "First frame; requires --end");
    range.add_option("--end", t.end, "Last frame; requires --start");
    range.add_option("--step", t.step, "Step between frames, with --start and --end");

    CLI::Option_group& files = *app.add_option_group("Files");
    files.add_option("--type", t.pixelType, "Pixel type; default: as in CLIP")->check(CLI::IsMember({"half", "float"}));
    files.add_option("--compression", t.compression, "EXR compression; default: as in CLIP")
        ->check(CLI::IsMember({"none", "rle", "zips", "zip", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab"}));
    files.add_option("--zip", t.zip, "Compress zip and zips quickly (fast), or into smaller files (small)")
        ->capture_default_str()
        ->check(CLI::IsMember({"fast", "small"}));
    files.add_option("--window", t.window, "Data window: the whole corrected picture (box), or the format")
        ->capture_default_str()
        ->check(CLI::IsMember({"box", "format"}));
    files
        .add_option("--size", t.boxSize,
                    "Data window per frame (frame; default for EXR), or one for the whole clip (constant)")
        ->check(CLI::IsMember({"frame", "constant"}));
    files.add_flag("--skip-existing", t.skipExisting, "Keep finished frames made from the same inputs");
    files.add_flag("--overwrite", t.overwrite, "Replace existing files");
    files.add_flag("--force", t.force, "Correct CLIP even if it is already marked as corrected");

    t.decoding.declareOptions(app);

    CLI::Option_group& job = *app.add_option_group("Job");
    job.add_flag("--keep-going", t.keepGoing, "Continue with other frames when one fails (default)");
    job.add_flag("--strict", t.strict, "Stop before the first frame if frames are missing, or size or channels change");
    job.add_flag("--stop-on-error", t.stopOnError, "Stop at the first frame that fails");
    job.add_option("--memory", t.memory,
                   "Memory limit for frames in flight, such as 8G; default: half of the machine's");
    job.add_option("--threads", t.threads, "Threads for decoding and encoding; 0: one per core")
        ->capture_default_str()
        ->check(CLI::Range(0, 1024));
    declareDevice(job, t.device);
    job.add_option("--progress", t.progress, "auto: a bar on a terminal, lines elsewhere; json goes to standard output")
        ->capture_default_str()
        ->check(CLI::IsMember({"auto", "bar", "lines", "json", "none"}));
}

const std::string& RenderOptionsReader::progress() const { return m_texts->progress; }

const std::string& RenderOptionsReader::device() const { return m_texts->device; }

RenderOptions RenderOptionsReader::read() const {
    const Texts& t = *m_texts;
    RenderOptions options;
    options.clip = t.clip;
    options.output = FilePattern::parse(t.output, FilePattern::Use::Output);
    checkFormatOf(options.output);

    using Distortion = RenderOptions::Distortion;
    using Shading = RenderOptions::Shading;
    if (!t.distortion.empty()) {
        options.distortion = t.distortion == "undistort" ? Distortion::Undistort : Distortion::Distort;
    }
    if (!t.shading.empty()) options.shading = t.shading == "remove" ? Shading::Remove : Shading::Add;
    if (options.distortion == Distortion::None && options.shading == Shading::None) {
        refuse("No correction is requested: give --distortion undistort|distort, --shading remove|add, or both.");
    }
    if (options.distortion != Distortion::None && options.shading != Shading::None) {
        if (t.renderMap) refuse("--map writes the map of one correction: omit --distortion or --shading.");
        if ((options.distortion == Distortion::Undistort) != (options.shading == Shading::Remove)) {
            refuse(
                "--distortion undistort requires --shading remove, and distort requires add: a picture either was "
                "recorded through the lens or was not. For other combinations run the program twice.");
        }
    }
    options.renderMap = t.renderMap;
    options.inputSpace = given(t.inputSpace);
    options.colourConfig = t.colourConfig;
    if (options.renderMap && options.inputSpace) refuse("--map writes no pixels of the clip: omit --input-space.");
    if (!t.shadingLayers.empty()) {
        if (options.shading == Shading::None || t.renderMap)
            refuse("--shading-layers requires --shading, and cannot be combined with --map.");
        options.shadingLayers = ShadingLayers::parse(t.shadingLayers);
    }

    options.plate = given(t.plate);
    options.hasPlate = options.plate.has_value();
    static_cast<LensDataOptions&>(options) = t.lensData.read();

    options.frames = framesOf(t.frames, t.start, t.end, t.step);
    if (!t.pixelType.empty()) {
        options.pixelType = t.pixelType == "half" ? RenderOptions::PixelType::Half : RenderOptions::PixelType::Float;
    }
    options.compression = given(t.compression);
    options.zip = t.zip == "fast" ? Image::ZipGoal::Fast : Image::ZipGoal::Small;
    options.window = t.window == "box" ? RenderOptions::Window::Box : RenderOptions::Window::Format;
    if (t.boxSize.empty()) {
        options.boxSize =
            options.isOutputWithDataWindow() ? RenderOptions::BoxSize::Frame : RenderOptions::BoxSize::Constant;
    } else {
        options.boxSize = t.boxSize == "frame" ? RenderOptions::BoxSize::Frame : RenderOptions::BoxSize::Constant;
    }

    if (t.skipExisting && t.overwrite) refuse("--skip-existing and --overwrite cannot be combined.");
    if (t.keepGoing && t.stopOnError) refuse("--keep-going and --stop-on-error cannot be combined.");
    options.skipExisting = t.skipExisting;
    options.overwrite = t.overwrite;
    options.stopOnError = t.stopOnError;
    options.strict = t.strict;
    options.force = t.force;
    if (!t.memory.empty()) options.memory = parseMemorySize(t.memory);
    options.decoding = t.decoding.read();
    options.threads = t.threads;
    return options;
}

} // namespace Program
