#include "Lens/LensGeometry.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include "Chain/PlaneTransfer.h"
#include "ImageError.h"
#include "Lens/CorrectionFileData.h"
#include "Lens/FrameGeometry.h"
#include "Report/Failure.h"
#include "Report/JobRecord.h"

namespace Tools {

/// A frame's header with what the host's reader knows about it.
struct LensGeometry::Header {
    std::int32_t number = 0;
    Image::Frame frame;
    Image::Metadata metadata;
    std::string path; ///< under which the reader shows it
    ClipRange range;

    ClipFrame shown() const { return {&frame, &metadata, path, range}; }
};

/// The distortion node in one mode.
struct LensGeometry::Node {
    explicit Node(ChainSettings chainSettings) : settings(std::move(chainSettings)), chain(settings, 1) {}

    const ChainSettings settings;
    CorrectionChain chain;
};

namespace {

Image::Window windowOf(PixelSize size) {
    return {0, 0, static_cast<std::int32_t>(size.width) - 1, static_cast<std::int32_t>(size.height) - 1};
}

/// A picture of the window that holds no pixels yet.
Image::Part pictureOf(const Image::Window& window, const Image::Window& format) {
    Image::Part part;
    part.dataWindow = window;
    part.displayWindow = format;
    part.channels = Image::floatRgbaChannels();
    part.layOutPlanes();
    return part;
}

/// Under which path a reader shows a clip so that the nodes take `header`'s own name for the clip's name and count its
/// frames by number: image sequences are known by what stands before the name's first ".", others by their whole name.
std::string shownPathFor(const CorrectionData::Header& header) {
    const std::string& name = header.videoFileName;
    const std::size_t dot = name.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : name.substr(dot + 1);
    const bool isKnownWhole =
        !extension.empty() && extension != "exr" && extension != "EXR" && extension != "dpx" && extension != "DPX";
    if (isKnownWhole) return "/" + name;
    const bool isClipNamePlain = !header.clipName.empty() && header.clipName.find('.') == std::string::npos;
    return "/" + (isClipNamePlain ? header.clipName : name) + ".0.exr";
}

/// The attributes of a picture that say which frame of which recording it is.
std::vector<Image::Attribute> identityOf(const Image::Part& part) {
    std::vector<Image::Attribute> identity;
    for (const char* const name : {"timeCode", "input/timecode", "reelName", "imageCounter", "framesPerSecond",
                                   "captureRate", "capDate", "utcOffset"}) {
        if (const Image::Attribute* const attribute = part.findAttribute(name)) identity.push_back(*attribute);
    }
    return identity;
}

} // namespace

LensGeometry::LensGeometry(LensOptions options) : m_options(std::move(options)) {
    if (m_options.size) {
        const CorrectionFileData file = CorrectionFileData::read(m_options.input);
        m_shownPath = shownPathFor(file.content->header);
        for (const auto& [number, record] : file.content->frames) {
            if (number > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max())) {
                refuse(fmt::format("{}: frame number {} is too large for file names.", m_options.input, number));
            }
            m_frames.push_back(static_cast<std::int32_t>(number));
        }
        if (m_frames.empty()) {
            refuse(fmt::format("{}: it contains no frame. Run \"lenscorrect check\" on it for the reasons.",
                               m_options.input));
        }
    } else {
        m_clip.emplace(m_options.input, m_options.decoding);
        if (m_options.plate) m_plate.emplace(*m_options.plate, m_options.decoding);
        m_frames = m_clip->frameNumbers();
    }
    if (m_options.frames) m_frames = m_options.frames->frames();
}

LensGeometry::~LensGeometry() = default;

std::string LensGeometry::file(std::int32_t frame) const {
    if (!m_clip) return {};
    const auto file = m_clip->frames().find(frame);
    return file == m_clip->frames().end() ? std::string() : file->second;
}

std::string LensGeometry::message(std::int32_t frame, const std::exception& exception) const {
    const auto* const failure = dynamic_cast<const Failure*>(&exception);
    return frameMessage(frame, file(frame), failure ? failure->text() : exception.what());
}

std::string LensGeometry::advice(const std::exception& exception) const {
    const auto* const failure = dynamic_cast<const Failure*>(&exception);
    if (!failure || failure->kind() != Failure::Kind::Correction || !m_clip || m_options.correctionFile) return {};
    return "\"lenscorrect find\" lists the folders searched for the clip's correction file; --correction-file selects "
           "a file.";
}

const LensGeometry::Header& LensGeometry::header(std::int32_t frame) {
    if (m_header && m_header->number == frame) return *m_header;
    m_header.reset();
    auto header = std::make_unique<Header>();
    header->number = frame;
    if (m_clip) {
        header->path = m_clip->shownPath(frame);
        header->frame = m_clip->readHeader(frame);
        if (const std::string text = m_options.pixelAspectObjection(header->frame); !text.empty())
            throw std::runtime_error(text);
        header->metadata = m_clip->metadata(frame, header->frame);
        header->range = m_clip->range();
    } else {
        const Image::Window format = windowOf(*m_options.size);
        header->path = m_shownPath;
        header->frame.parts.push_back(pictureOf(format, format));
        header->metadata["input/frame"] = std::int64_t{frame};
        header->range = {0, frame};
    }
    m_header = std::move(header);
    return *m_header;
}

LensGeometry::Header LensGeometry::plateHeader(std::int32_t frame) const {
    Header header;
    header.number = frame;
    header.path = m_plate->shownPath(frame);
    header.frame = m_plate->readHeader(frame);
    header.metadata = m_plate->metadata(frame, header.frame);
    header.range = m_plate->range();
    return header;
}

LensGeometry::Node& LensGeometry::node(Direction direction, bool hasSeparatePlate) {
    const std::size_t index = direction == Direction::Undistort ? 0 : hasSeparatePlate ? 2 : 1;
    std::unique_ptr<Node>& node = m_nodes[index];
    if (node) return *node;
    ChainSettings settings;
    static_cast<LensDataOptions&>(settings) = m_options;
    settings.distortion =
        direction == Direction::Undistort ? ChainSettings::Distortion::Undistort : ChainSettings::Distortion::Distort;
    settings.hasPlate = m_plate || hasSeparatePlate;
    if (!m_clip) settings.correctionFile = m_options.input;
    node = std::make_unique<Node>(std::move(settings));
    return *node;
}

FrameGeometry LensGeometry::validated(std::int32_t frame, Node& node, const ClipFrame& image, const ClipFrame& plate,
                                      Direction direction) const {
    node.chain.setFrame(frame, image, 0, plate);
    const FramePlan plan = node.chain.validate();
    const PictureShape shape = node.chain.shape();
    FrameGeometry geometry;
    const Image::Part& part = image.frame->parts.front();
    geometry.format = part.displayWindow;
    // A map serves other pictures of the format too.
    geometry.box = fileWindow(plan.keptOf(shape.whole(), shape), part.displayWindow);
    geometry.picture = fileWindow(plan.kept, part.displayWindow);
    geometry.pixelAspectRatio = part.pixelAspectRatio;
    geometry.identity = identityOf(part);
    geometry.direction = direction;
    geometry.lens = plan.frame;
    geometry.node = plan.distortion.value();
    geometry.idealMillimetresPerPixel =
        RecordedFrame(shape.format, shape.overscan).millimetresPerPixel(plan.frame.recordingFormat);
    return geometry;
}

FrameGeometry LensGeometry::geometry(std::int32_t frame, Direction direction) {
    const Header& image = header(frame);
    if (!m_plate) return validated(frame, node(direction, false), image.shown(), image.shown(), direction);
    const Header plate = plateHeader(frame);
    return validated(frame, node(direction, false), image.shown(), plate.shown(), direction);
}

FrameGeometry LensGeometry::redistortion(std::int32_t frame, const FrameGeometry& undistortion) {
    Header image = header(frame);
    image.frame.parts = {pictureOf(undistortion.picture, undistortion.format)};
    image.frame.parts.front().pixelAspectRatio = undistortion.pixelAspectRatio;
    Node& distorting = node(Direction::Redistort, true);
    if (!m_plate) return validated(frame, distorting, image.shown(), header(frame).shown(), Direction::Redistort);
    const Header plate = plateHeader(frame);
    return validated(frame, distorting, image.shown(), plate.shown(), Direction::Redistort);
}

Image::Window LensGeometry::inputWindow(std::int32_t frame) { return header(frame).frame.parts.front().dataWindow; }

Image::Frame LensGeometry::renderRoundTrip(std::int32_t frame, const Image::Frame& picture) {
    const Header plate = m_plate ? plateHeader(frame) : header(frame);
    Header image = header(frame);
    image.frame.parts = picture.parts;
    for (Node* const step : {&node(Direction::Undistort, false), &node(Direction::Redistort, true)}) {
        Image::Frame rendered;
        step->chain.setFrame(frame, image.shown(), 0, plate.shown());
        const DD::Image::Box box = step->chain.validate().kept;
        const Image::Part& input = image.frame.parts.front();
        Image::Part& output =
            rendered.parts.emplace_back(pictureOf(fileWindow(box, input.displayWindow), input.displayWindow));
        output.allocatePixels();
        step->chain.render([&](const DD::Image::ImagePlane& plane, const std::vector<DD::Image::Channel>& channels) {
            storePlane(plane, output, channels, 1);
        });
        image.frame = std::move(rendered);
    }
    return std::move(image.frame);
}

} // namespace Tools
