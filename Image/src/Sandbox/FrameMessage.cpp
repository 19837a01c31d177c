#include "Sandbox/FrameMessage.h"

#include <cstring>
#include <limits>

#include "Exr/ExrHeader.h"

namespace Image {

namespace {

constexpr std::uint32_t maxTileSide = 65536;

class Writer {
public:
    template <typename Number>
    void number(Number value) {
        const std::size_t at = m_bytes.size();
        m_bytes.resize(at + sizeof value);
        std::memcpy(m_bytes.data() + at, &value, sizeof value);
    }
    void text(const std::string& value) {
        number(static_cast<std::uint64_t>(value.size()));
        m_bytes += value;
    }
    void window(const Window& value) {
        for (const std::int32_t side : {value.minX, value.minY, value.maxX, value.maxY}) number(side);
    }
    std::string take() { return std::move(m_bytes); }

private:
    std::string m_bytes;
};

class Reader {
public:
    explicit Reader(std::string_view bytes) : m_rest(bytes) {}

    template <typename Number>
    Number number() {
        Number value;
        need(sizeof value);
        std::memcpy(&value, m_rest.data(), sizeof value);
        m_rest.remove_prefix(sizeof value);
        return value;
    }
    std::string text() {
        const std::uint64_t size = number<std::uint64_t>();
        need(size);
        std::string value(m_rest.substr(0, static_cast<std::size_t>(size)));
        m_rest.remove_prefix(static_cast<std::size_t>(size));
        return value;
    }
    /// How many entries of at least `leastBytes` follow.
    std::size_t count(std::uint64_t leastBytes) {
        const std::uint64_t entries = number<std::uint64_t>();
        if (entries > m_rest.size() / leastBytes) throw FrameMessageError("it ends too early");
        return static_cast<std::size_t>(entries);
    }
    template <typename Enumeration>
    Enumeration oneOf(Enumeration last) {
        const std::uint8_t value = number<std::uint8_t>();
        if (value > static_cast<std::uint8_t>(last)) throw FrameMessageError("it has an unknown kind of value");
        return static_cast<Enumeration>(value);
    }
    Window window() {
        Window value;
        for (std::int32_t* const side : {&value.minX, &value.minY, &value.maxX, &value.maxY})
            *side = number<std::int32_t>();
        return value;
    }
    void end() const {
        if (!m_rest.empty()) throw FrameMessageError("it has bytes after its end");
    }

private:
    void need(std::uint64_t bytes) const {
        if (m_rest.size() < bytes) throw FrameMessageError("it ends too early");
    }

    std::string_view m_rest;
};

void checkWindow(const Window& window, const Limits& limits) {
    if (window.width() < 1 || window.height() < 1) throw FrameMessageError("a window is empty");
    std::int64_t pixels = 0;
    if ((limits.maxSide != 0 && (window.width() > limits.maxSide || window.height() > limits.maxSide)) ||
        __builtin_mul_overflow(window.width(), window.height(), &pixels) ||
        (limits.maxPixels != 0 && pixels > limits.maxPixels))
        throw FrameMessageError("a window exceeds the limits");
}

void checkTotal(const std::vector<Part>& parts, const Limits& limits) {
    std::uint64_t total = 0;
    for (const Part& part : parts) {
        for (const Plane& plane : part.planes) {
            std::uint64_t bytes = 0;
            if (__builtin_mul_overflow(std::uint64_t{plane.rowBytes()}, plane.height, &bytes) ||
                __builtin_add_overflow(total, bytes, &total))
                throw FrameMessageError("its pixels exceed the limits");
        }
    }
    if (limits.maxBytes != 0 && total > static_cast<std::uint64_t>(limits.maxBytes))
        throw FrameMessageError("its pixels exceed the limits");
}

void writePart(Writer& writer, const Part& part) {
    writer.text(part.name);
    writer.window(part.dataWindow);
    writer.window(part.displayWindow);
    writer.number(part.pixelAspectRatio);
    writer.text(part.compression);
    writer.number(static_cast<std::uint8_t>(part.lineOrder));
    writer.number(part.tileWidth);
    writer.number(part.tileHeight);
    writer.number(static_cast<std::uint64_t>(part.channels.size()));
    for (const Channel& channel : part.channels) {
        writer.text(channel.name);
        writer.number(static_cast<std::uint8_t>(channel.type));
        writer.number(channel.xSampling);
        writer.number(channel.ySampling);
        writer.number(static_cast<std::uint8_t>(channel.perceptuallyLinear));
    }
    writer.number(static_cast<std::uint64_t>(part.attributes.size()));
    for (const Attribute& attribute : part.attributes) {
        writer.text(attribute.name);
        writer.text(attribute.type);
        writer.text(attribute.value);
    }
}

Part readPart(Reader& reader, const Limits& limits) {
    Part part;
    part.name = reader.text();
    part.dataWindow = reader.window();
    part.displayWindow = reader.window();
    checkWindow(part.dataWindow, limits);
    checkWindow(part.displayWindow, limits);
    part.pixelAspectRatio = reader.number<float>();
    part.compression = reader.text();
    part.lineOrder = reader.oneOf(LineOrder::RandomY);
    part.tileWidth = reader.number<std::uint32_t>();
    part.tileHeight = reader.number<std::uint32_t>();
    if ((part.tileWidth == 0) != (part.tileHeight == 0) || part.tileWidth > maxTileSide ||
        part.tileHeight > maxTileSide)
        throw FrameMessageError("its tile size is invalid");
    const std::size_t channels = reader.count(18);
    if (channels == 0 || (limits.maxChannels != 0 && channels > static_cast<std::uint64_t>(limits.maxChannels)))
        throw FrameMessageError("it has no channels, or more than the limit");
    for (std::size_t i = 0; i < channels; ++i) {
        Channel& channel = part.channels.emplace_back();
        channel.name = reader.text();
        channel.type = reader.oneOf(PixelType::Float);
        channel.xSampling = reader.number<std::int32_t>();
        channel.ySampling = reader.number<std::int32_t>();
        channel.perceptuallyLinear = reader.number<std::uint8_t>() != 0;
        if (channel.xSampling < 1 || channel.ySampling < 1 || !exrSamplingFits(channel, part.dataWindow))
            throw FrameMessageError("a channel's sub-sampling is invalid");
    }
    const std::size_t attributes = reader.count(24);
    for (std::size_t i = 0; i < attributes; ++i) {
        Attribute& attribute = part.attributes.emplace_back();
        attribute.name = reader.text();
        attribute.type = reader.text();
        attribute.value = reader.text();
    }
    part.layOutPlanes();
    return part;
}

} // namespace

std::string FrameMessage::bytesOf(const Frame& frame, std::int64_t frameCount) {
    Writer writer;
    writer.number(frameCount);
    writer.text(frame.format);
    writer.number(static_cast<std::uint64_t>(frame.parts.size()));
    for (const Part& part : frame.parts) writePart(writer, part);
    return writer.take();
}

FrameMessage FrameMessage::parse(std::string_view bytes, const Limits& limits) {
    Reader reader(bytes);
    FrameMessage message;
    message.frameCount = reader.number<std::int64_t>();
    if (message.frameCount < 1 || message.frameCount > maxFrameCount)
        throw FrameMessageError("its number of frames is invalid");
    message.frame.format = reader.text();
    const std::size_t parts = reader.count(80);
    if (parts == 0) throw FrameMessageError("it has no parts");
    for (std::size_t i = 0; i < parts; ++i) message.frame.parts.push_back(readPart(reader, limits));
    reader.end();
    checkTotal(message.frame.parts, limits);
    return message;
}

} // namespace Image
