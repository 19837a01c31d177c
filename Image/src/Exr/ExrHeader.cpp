#include "Exr/ExrHeader.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Image {

namespace {

constexpr std::uint32_t magic = 20000630;
constexpr std::uint32_t tiledFlag = 0x200;
constexpr std::uint32_t longNamesFlag = 0x400;
constexpr std::uint32_t deepFlag = 0x800;
constexpr std::uint32_t multiPartFlag = 0x1000;
constexpr std::size_t longestShortName = 31;
constexpr std::size_t longestName = 255;

constexpr std::array<const char*, 10> compressionNames{"none",  "rle", "zips", "zip",  "piz",
                                                       "pxr24", "b44", "b44a", "dwaa", "dwab"};

/// Reads forwards through a file, a block at a time.
class Cursor {
public:
    explicit Cursor(const InputFile& file) : m_file(file) {}

    std::uint64_t position() const { return m_start + m_next; }

    std::uint8_t byte() {
        if (m_next == m_block.size()) fill();
        return static_cast<std::uint8_t>(m_block[m_next++]);
    }
    std::uint32_t word() {
        std::uint32_t value = 0;
        for (unsigned shift = 0; shift < 32; shift += 8) value |= std::uint32_t{byte()} << shift;
        return value;
    }
    /// Up to the next NUL, which is skipped.
    std::string name() {
        std::string text;
        while (const std::uint8_t next = byte()) {
            text.push_back(static_cast<char>(next));
            if (text.size() > longestName)
                throw ImageError(m_file.path(), "the header is damaged (a name does not end)");
        }
        return text;
    }
    std::string bytes(std::size_t n) {
        if (n > m_file.size() - position()) tooShort();
        std::string text;
        const std::size_t buffered = std::min(n, m_block.size() - m_next);
        text.assign(m_block, m_next, buffered);
        m_next += buffered;
        if (buffered == n) return text;
        text.resize(n);
        const std::size_t rest = n - buffered;
        const std::uint64_t from = position();
        if (m_file.read(text.data() + buffered, rest, from) != rest) tooShort();
        m_start = from + rest;
        m_next = 0;
        m_block.clear();
        return text;
    }

private:
    [[noreturn]] void tooShort() {
        throw ImageError(m_file.path(), "the file ends inside its header; it is incomplete, copy or render it again");
    }
    void fill() {
        m_start += m_block.size();
        m_next = 0;
        m_block.resize(16384);
        m_block.resize(m_file.read(m_block.data(), m_block.size(), m_start));
        if (m_block.empty()) tooShort();
    }

    const InputFile& m_file;
    std::string m_block;
    std::uint64_t m_start = 0;
    std::size_t m_next = 0;
};

template <typename Value>
Value valueAt(const std::string& bytes, std::size_t offset) {
    Value value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

template <typename Value>
void append(std::string& bytes, Value value) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.append(raw, sizeof value);
}

/// The value of a required attribute of the given type and size.
const std::string& required(const InputFile& file, const Part& part, const char* name, const char* type,
                            std::size_t size) {
    const Attribute* attribute = part.findAttribute(name);
    if (attribute == nullptr) throw ImageError(file.path(), std::string("the header has no ") + name);
    if (attribute->type != type || (size != 0 && attribute->value.size() != size))
        throw ImageError(file.path(), std::string("the header's ") + name + " attribute is damaged");
    return attribute->value;
}

Window windowFrom(const std::string& value) {
    return {valueAt<std::int32_t>(value, 0), valueAt<std::int32_t>(value, 4), valueAt<std::int32_t>(value, 8),
            valueAt<std::int32_t>(value, 12)};
}

std::string windowValue(const Window& window) {
    std::string value;
    for (const std::int32_t corner : {window.minX, window.minY, window.maxX, window.maxY}) append(value, corner);
    return value;
}

std::string windowText(const Window& window) {
    return std::to_string(window.minX) + " " + std::to_string(window.minY) + " to " + std::to_string(window.maxX) +
           " " + std::to_string(window.maxY);
}

std::vector<Channel> channelsFrom(const InputFile& file, const std::string& value) {
    const auto damaged = [&file]() -> ImageError {
        return {file.path(), "the header's channels attribute is damaged"};
    };
    std::vector<Channel> channels;
    std::size_t at = 0;
    while (at < value.size() && value[at] != '\0') {
        const std::size_t end = value.find('\0', at);
        if (end == std::string::npos || value.size() - end < 17) throw damaged();
        Channel channel;
        channel.name = value.substr(at, end - at);
        switch (valueAt<std::int32_t>(value, end + 1)) {
            case 0:
                channel.type = PixelType::UInt32;
                break;
            case 1:
                channel.type = PixelType::Half;
                break;
            case 2:
                channel.type = PixelType::Float;
                break;
            default:
                throw damaged();
        }
        channel.perceptuallyLinear = value[end + 5] != 0;
        channel.xSampling = valueAt<std::int32_t>(value, end + 9);
        channel.ySampling = valueAt<std::int32_t>(value, end + 13);
        if (channel.xSampling < 1 || channel.ySampling < 1) throw damaged();
        channels.push_back(channel);
        at = end + 17;
    }
    if (channels.empty()) throw ImageError(file.path(), "the header lists no channels");
    return channels;
}

std::string channelsValue(const Part& part, const std::vector<PixelType>& types) {
    std::string value;
    for (const std::size_t index : exrChannelOrder(part)) {
        const Channel& channel = part.channels[index];
        value.append(channel.name).push_back('\0');
        append(value, static_cast<std::int32_t>(exrPixelTypeNumber(types[index])));
        append(value, std::uint32_t{channel.perceptuallyLinear ? 1u : 0u});
        append(value, channel.xSampling);
        append(value, channel.ySampling);
    }
    value.push_back('\0');
    return value;
}

void checkSize(const InputFile& file, const Window& window, const char* name, const Limits& limits) {
    if (window.width() < 1 || window.height() < 1)
        throw ImageError(file.path(),
                         std::string("the ") + name + " is empty or reversed (" + windowText(window) + ")");
    const std::string size = std::to_string(window.width()) + " x " + std::to_string(window.height()) + " pixels";
    if (limits.maxSide != 0 && (window.width() > limits.maxSide || window.height() > limits.maxSide))
        throw ImageError(file.path(), std::string("the ") + name + " of " + size + " exceeds the limit of " +
                                          std::to_string(limits.maxSide) + " pixels a side");
    std::int64_t pixels;
    if (__builtin_mul_overflow(window.width(), window.height(), &pixels) ||
        (limits.maxPixels != 0 && pixels > limits.maxPixels))
        throw ImageError(file.path(), std::string("the ") + name + " of " + size + " exceeds the limit of " +
                                          std::to_string(limits.maxPixels) + " pixels");
}

/// Fills the part's fields from its attributes.
void interpret(const InputFile& file, Part& part, std::uint32_t flags, const Limits& limits) {
    const Attribute* type = part.findAttribute("type");
    if (type != nullptr && (type->value == "deepscanline" || type->value == "deeptile"))
        throw UnsupportedImage(file.path(), "deep images are not supported; flatten the image first");
    part.name = part.text("name");
    part.dataWindow = windowFrom(required(file, part, "dataWindow", "box2i", 16));
    part.displayWindow = windowFrom(required(file, part, "displayWindow", "box2i", 16));
    checkSize(file, part.dataWindow, "data window", limits);
    checkSize(file, part.displayWindow, "display window", limits);
    part.pixelAspectRatio = valueAt<float>(required(file, part, "pixelAspectRatio", "float", 4), 0);
    const unsigned compression = static_cast<std::uint8_t>(required(file, part, "compression", "compression", 1)[0]);
    if (compression >= compressionNames.size())
        throw ImageError(file.path(), "compression method " + std::to_string(compression) + " is not supported");
    part.compression = compressionNames[compression];
    const unsigned order = static_cast<std::uint8_t>(required(file, part, "lineOrder", "lineOrder", 1)[0]);
    if (order > 2) throw ImageError(file.path(), "the header's lineOrder attribute is damaged");
    part.lineOrder = static_cast<LineOrder>(order);
    part.channels = channelsFrom(file, required(file, part, "channels", "chlist", 0));
    if (limits.maxChannels != 0 && part.channels.size() > static_cast<std::size_t>(limits.maxChannels))
        throw ImageError(file.path(), std::to_string(part.channels.size()) + " channels exceed the limit of " +
                                          std::to_string(limits.maxChannels));
    for (const Channel& channel : part.channels)
        if (!exrSamplingFits(channel, part.dataWindow))
            throw ImageError(file.path(), "the sub-sampled channel " + channel.name + " does not fit the data window");
    const bool tiled = type != nullptr ? type->value == "tiledimage" : (flags & tiledFlag) != 0;
    if (tiled) {
        const std::string& tiles = required(file, part, "tiles", "tiledesc", 9);
        part.tileWidth = valueAt<std::uint32_t>(tiles, 0);
        part.tileHeight = valueAt<std::uint32_t>(tiles, 4);
        // OpenEXR stores no tile larger than its picture, but a size near it is usual; one far beyond is damage.
        if (part.tileWidth == 0 || part.tileHeight == 0 || part.tileWidth > 65536 || part.tileHeight > 65536)
            throw ImageError(file.path(), "the header's tiles attribute is damaged");
    }
    part.layOutPlanes();
}

void checkTotal(const InputFile& file, const std::vector<Part>& parts, const Limits& limits) {
    std::uint64_t total = 0;
    bool overflow = false;
    for (const Part& part : parts) {
        for (const Plane& plane : part.planes) {
            std::uint64_t bytes;
            overflow = __builtin_mul_overflow(std::uint64_t{plane.rowBytes()}, plane.height, &bytes) ||
                       __builtin_add_overflow(total, bytes, &total) || overflow;
        }
    }
    if (overflow || (limits.maxBytes != 0 && total > static_cast<std::uint64_t>(limits.maxBytes)))
        throw ImageError(file.path(), "its pixels need more memory than the limit of " +
                                          std::to_string(limits.maxBytes >> 20) + " MiB");
}

} // namespace

bool isExr(const InputFile& file) {
    std::uint32_t first = 0;
    return file.read(&first, sizeof first, 0) == sizeof first && first == magic;
}

ExrHeader readExrHeader(const InputFile& file, const Limits& limits) {
    if (!isExr(file)) throw ImageError(file.path(), "is not an OpenEXR file");
    Cursor cursor(file);
    cursor.word();
    const std::uint32_t version = cursor.word();
    if ((version & 0xff) > 2)
        throw ImageError(file.path(), "OpenEXR version " + std::to_string(version & 0xff) + " is not supported");
    if ((version & deepFlag) != 0 && (version & multiPartFlag) == 0)
        throw UnsupportedImage(file.path(), "deep images are not supported; flatten the image first");
    ExrHeader header;
    header.multiPart = (version & multiPartFlag) != 0;
    for (;;) {
        Part part;
        for (std::string name = cursor.name(); !name.empty(); name = cursor.name()) {
            Attribute attribute;
            attribute.name = std::move(name);
            attribute.type = cursor.name();
            const std::uint32_t size = cursor.word();
            attribute.value = cursor.bytes(size);
            part.attributes.push_back(std::move(attribute));
        }
        // An empty header ends the list of parts.
        if (header.multiPart && part.attributes.empty()) break;
        interpret(file, part, version, limits);
        header.parts.push_back(std::move(part));
        if (!header.multiPart) break;
    }
    if (header.parts.empty()) throw ImageError(file.path(), "the header lists no parts");
    checkTotal(file, header.parts, limits);
    header.end = cursor.position();
    return header;
}

std::string composeExrHeader(const std::string& path, const std::vector<Part>& parts,
                             const std::vector<std::vector<PixelType>>& storedTypes,
                             const std::vector<std::int32_t>& chunkCounts) {
    const bool multiPart = parts.size() > 1;
    std::uint32_t version = 2 | (multiPart ? multiPartFlag : 0u);
    if (!multiPart && parts.front().tileWidth != 0) version |= tiledFlag;
    std::string body;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Part& part = parts[i];
        Part stored;
        stored.attributes = part.attributes;
        // Bytes, not readers, count: windows and shape follow the fields, all else is as it came.
        stored.setAttribute({"channels", "chlist", channelsValue(part, storedTypes[i])});
        stored.setAttribute(
            {"compression", "compression", std::string(1, static_cast<char>(exrCompressionNumber(part.compression)))});
        stored.setAttribute({"dataWindow", "box2i", windowValue(part.dataWindow)});
        stored.setAttribute({"displayWindow", "box2i", windowValue(part.displayWindow)});
        stored.setAttribute({"lineOrder", "lineOrder", std::string(1, static_cast<char>(part.lineOrder))});
        std::string value;
        append(value, part.pixelAspectRatio);
        stored.setAttribute({"pixelAspectRatio", "float", value});
        if (stored.findAttribute("screenWindowCenter") == nullptr)
            stored.setAttribute({"screenWindowCenter", "v2f", std::string(8, '\0')});
        if (stored.findAttribute("screenWindowWidth") == nullptr) {
            value.clear();
            append(value, 1.0f);
            stored.setAttribute({"screenWindowWidth", "float", value});
        }
        if (part.tileWidth != 0) {
            value.clear();
            append(value, part.tileWidth);
            append(value, part.tileHeight);
            value.push_back('\0'); // one level
            stored.setAttribute({"tiles", "tiledesc", value});
        } else {
            stored.removeAttribute("tiles");
        }
        if (multiPart || stored.findAttribute("type") != nullptr)
            stored.setAttribute({"type", "string", part.tileWidth != 0 ? "tiledimage" : "scanlineimage"});
        if (multiPart || !part.name.empty()) stored.setAttribute({"name", "string", part.name});
        if (multiPart || stored.findAttribute("chunkCount") != nullptr) {
            value.clear();
            append(value, chunkCounts[i]);
            stored.setAttribute({"chunkCount", "int", value});
        }
        for (const Attribute& attribute : stored.attributes) {
            // Other formats' types mean nothing to readers of OpenEXR.
            if (attribute.type.starts_with("oiio/")) continue;
            if (attribute.name.empty() || attribute.name.size() > longestName || attribute.type.size() > longestName ||
                attribute.type.empty() || attribute.value.size() > 0x7fffffff ||
                attribute.name.find('\0') != std::string::npos)
                throw ImageError(
                    path, "cannot be written: the attribute \"" + attribute.name + "\" does not fit an OpenEXR header");
            if (attribute.name.size() > longestShortName || attribute.type.size() > longestShortName)
                version |= longNamesFlag;
            body.append(attribute.name).push_back('\0');
            body.append(attribute.type).push_back('\0');
            append(body, static_cast<std::uint32_t>(attribute.value.size()));
            body.append(attribute.value);
        }
        for (const Channel& channel : part.channels)
            if (channel.name.size() > longestShortName) version |= longNamesFlag;
        body.push_back('\0');
    }
    if (multiPart) body.push_back('\0');
    std::string header;
    append(header, magic);
    append(header, version);
    return header + body;
}

int exrCompressionNumber(const std::string& name) {
    const auto found = std::find(compressionNames.begin(), compressionNames.end(), name);
    return found == compressionNames.end() ? -1 : static_cast<int>(found - compressionNames.begin());
}

std::vector<std::size_t> exrChannelOrder(const Part& part) {
    std::vector<std::size_t> order(part.channels.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&part](std::size_t a, std::size_t b) { return part.channels[a].name < part.channels[b].name; });
    return order;
}

int exrPixelTypeNumber(PixelType type) {
    switch (type) {
        case PixelType::UInt32:
            return 0;
        case PixelType::Half:
            return 1;
        case PixelType::Float:
            return 2;
        case PixelType::UInt8:
        case PixelType::UInt16:
            break;
    }
    return -1;
}

bool exrSamplingFits(const Channel& channel, const Window& dataWindow) {
    return channel.xSampling > 0 && channel.ySampling > 0 && dataWindow.minX % channel.xSampling == 0 &&
           dataWindow.minY % channel.ySampling == 0 && dataWindow.width() % channel.xSampling == 0 &&
           dataWindow.height() % channel.ySampling == 0;
}

} // namespace Image
