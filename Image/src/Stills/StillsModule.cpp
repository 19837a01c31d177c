// The module for stills other than OpenEXR: DPX, TIFF, PNG and whatever else OpenImageIO knows.

#include <OpenImageIO/imageio.h>
#include <OpenImageIO/tiffutils.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "DroppedPictures.h"
#include "Files.h"
#include "FrameReader.h"
#include "FrameWriter.h"
#include "ImageModule.h"
#include "MemoryFile.h"
#include "StillFormat.h"

namespace Image {

namespace {

constexpr const char* otherTypePrefix = "oiio/";
constexpr const char* fixedDate = "1970:01:01 00:00:00";
/// Where a DPX header holds the file's own name.
constexpr std::size_t dpxNameOffset = 36;
constexpr std::size_t dpxNameSize = 100;

/// Attributes that OpenImageIO calls otherwise than OpenEXR does.
struct Alias {
    const char* exr;
    const char* oiio;
};
constexpr std::array<Alias, 9> aliases{{{"timeCode", "smpte:TimeCode"},
                                        {"keyCode", "smpte:KeyCode"},
                                        {"framesPerSecond", "FramesPerSecond"},
                                        {"capDate", "DateTime"},
                                        {"comments", "ImageDescription"},
                                        {"owner", "Copyright"},
                                        {"xDensity", "XResolution"},
                                        {"expTime", "ExposureTime"},
                                        {"aperture", "FNumber"}}};

/// OpenEXR's types that are plain runs of numbers, and OpenImageIO's.
struct TypeName {
    const char* exr;
    OIIO::TypeDesc oiio;
};
const std::array<TypeName, 10>& typeNames() {
    static const std::array<TypeName, 10> names{{{"int", OIIO::TypeInt},
                                                 {"float", OIIO::TypeFloat},
                                                 {"double", OIIO::TypeDesc(OIIO::TypeDesc::DOUBLE)},
                                                 {"timecode", OIIO::TypeTimeCode},
                                                 {"keycode", OIIO::TypeKeyCode},
                                                 {"rational", OIIO::TypeRational},
                                                 {"m44f", OIIO::TypeMatrix44},
                                                 {"m33f", OIIO::TypeMatrix33},
                                                 {"v3f", OIIO::TypeVector},
                                                 {"v2f", OIIO::TypeVector2}}};
    return names;
}

/// OpenImageIO 2.4 races inside its TIFF reader and writer.
class TiffLock {
public:
    explicit TiffLock(const std::string& format) {
        static std::mutex mutex;
        if (format == "tiff" || format == "tif") m_lock = std::unique_lock<std::mutex>(mutex);
    }

private:
    std::unique_lock<std::mutex> m_lock;
};

void setUpLibrary() {
    static const bool once = [] {
        // The program hands out its own threads.
        OIIO::attribute("threads", 1);
        OIIO::attribute("exr_threads", 1);
        return true;
    }();
    static_cast<void>(once);
}

/// Layouts whose reading overruns memory in OpenImageIO 2.4 are refused before it sees the file.
void checkDpx(const InputFile& file) {
    constexpr std::uint64_t descriptorOffset = 800;
    std::uint8_t descriptor = 0;
    std::array<char, 4> magic{};
    if (file.read(magic.data(), magic.size(), 0) != magic.size() || file.read(&descriptor, 1, descriptorOffset) != 1)
        throw ImageError(file.path(), "the file ends inside its header; it is incomplete, copy or render it again");
    const std::string text(magic.data(), magic.size());
    if (text != "SDPX" && text != "XPDS") throw ImageError(file.path(), "is not a DPX file");
    if (descriptor == 52)
        throw UnsupportedImage(file.path(), "DPX files with pixels stored as ABGR are not supported; convert to RGBA");
    if (descriptor >= 100 && descriptor <= 103)
        throw UnsupportedImage(file.path(), "DPX files with pixels stored as CbYCr are not supported; convert to RGB");
}

Attribute attributeFrom(const OIIO::ParamValue& value) {
    Attribute attribute;
    attribute.name = value.name().string();
    for (const Alias& alias : aliases)
        if (attribute.name == alias.oiio) attribute.name = alias.exr;
    const OIIO::TypeDesc type = value.type();
    if (type == OIIO::TypeString) {
        attribute.type = "string";
        attribute.value = value.get_string();
    } else {
        attribute.type = otherTypePrefix + std::string(type.c_str());
        for (const TypeName& name : typeNames())
            if (type == name.oiio) attribute.type = name.exr;
        attribute.value.assign(static_cast<const char*>(value.data()), static_cast<std::size_t>(value.datasize()));
    }
    // Hints between the library's own readers and writers.
    if (attribute.name.starts_with("oiio:") && attribute.type == "int")
        attribute.type = otherTypePrefix + std::string("int");
    return attribute;
}

/// Whether writers that know the name expect such a value: TIFF's takes a number for the address of a text, or of
/// several numbers, without asking.
bool suitsItsTag(const std::string& name, const OIIO::TypeDesc& type) {
    for (const char* const domain : {"TIFF", "Exif", "GPS"}) {
        const OIIO::TagInfo* const tag = OIIO::tag_lookup(domain, name);
        if (tag == nullptr) continue;
        if ((tag->tifftype == TIFF_ASCII) != (type == OIIO::TypeString)) return false;
        if (tag->tiffcount > 1 && type != OIIO::TypeString &&
            type.basevalues() != static_cast<std::size_t>(tag->tiffcount))
            return false;
    }
    return true;
}

/// Whether it may be a colour profile by its size and its mark: PNG's writer fails with what is none.
bool isColourProfile(const Attribute& attribute) {
    constexpr std::size_t headerSize = 128, markOffset = 36;
    const std::string& bytes = attribute.value;
    if (bytes.size() < headerSize || bytes.compare(markOffset, 4, "acsp") != 0) return false;
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size = size << 8 | static_cast<std::uint8_t>(bytes[i]);
    return size == bytes.size();
}

/// Gives the image to be written the attribute, unless its type has no counterpart in the library.
void setAttribute(OIIO::ImageSpec& spec, const Attribute& attribute) {
    std::string name = attribute.name;
    for (const Alias& alias : aliases)
        if (name == alias.exr) name = alias.oiio;
    if (name == "ICCProfile" && !isColourProfile(attribute)) return;
    if (attribute.type == "string") {
        // A text without letters says nothing, and ends the process in JPEG's writer.
        if (!attribute.value.empty() && suitsItsTag(name, OIIO::TypeString)) spec.attribute(name, attribute.value);
        return;
    }
    OIIO::TypeDesc type = OIIO::TypeUnknown;
    if (attribute.type.starts_with(otherTypePrefix)) type.fromstring(attribute.type.substr(5));
    for (const TypeName& known : typeNames())
        if (attribute.type == known.exr) type = known.oiio;
    // Strings of other shapes hold pointers.
    if (type == OIIO::TypeUnknown || type.basetype == OIIO::TypeDesc::STRING || type.basetype == OIIO::TypeDesc::PTR ||
        type.size() != attribute.value.size() || !suitsItsTag(name, type))
        return;
    spec.attribute(name, type, attribute.value.data());
}

OIIO::TypeDesc oiioType(PixelType type) {
    switch (type) {
        case PixelType::UInt8:
            return OIIO::TypeDesc::UINT8;
        case PixelType::UInt16:
            return OIIO::TypeDesc::UINT16;
        case PixelType::UInt32:
            return OIIO::TypeDesc::UINT32;
        case PixelType::Half:
            return OIIO::TypeDesc::HALF;
        case PixelType::Float:
            break;
    }
    return OIIO::TypeDesc::FLOAT;
}

PixelType nativeType(const OIIO::TypeDesc& type) {
    for (const PixelType each : {PixelType::UInt8, PixelType::UInt16, PixelType::UInt32, PixelType::Half})
        if (oiioType(each).basetype == type.basetype) return each;
    return PixelType::Float;
}

void checkSize(const std::string& path, const OIIO::ImageSpec& spec, const Limits& limits) {
    if (spec.width < 1 || spec.height < 1 || spec.nchannels < 1) throw ImageError(path, "has no pixels");
    if (spec.depth > 1) throw UnsupportedImage(path, "volumes are not supported");
    if (spec.deep) throw UnsupportedImage(path, "deep images are not supported; flatten the image first");
    const std::string size = std::to_string(spec.width) + " x " + std::to_string(spec.height) + " pixels";
    if (limits.maxSide != 0 && (spec.width > limits.maxSide || spec.height > limits.maxSide))
        throw ImageError(path, "the picture of " + size + " exceeds the limit of " + std::to_string(limits.maxSide) +
                                   " pixels a side");
    if (limits.maxPixels != 0 && std::int64_t{spec.width} * spec.height > limits.maxPixels)
        throw ImageError(
            path, "the picture of " + size + " exceeds the limit of " + std::to_string(limits.maxPixels) + " pixels");
    if (limits.maxChannels != 0 && spec.nchannels > limits.maxChannels)
        throw ImageError(path, std::to_string(spec.nchannels) + " channels exceed the limit of " +
                                   std::to_string(limits.maxChannels));
}

/// What the file holds beside its first picture at full size, in the words of DroppedPictures.h; empty if nothing. The
/// input stands at that picture before and after.
std::string droppedPicturesOf(OIIO::ImageInput& input) {
    const bool hasLevels = input.seek_subimage(0, 1);
    const bool hasPictures = !hasLevels && input.seek_subimage(1, 0);
    input.seek_subimage(0, 0);
    static_cast<void>(input.geterror()); // of the search
    if (hasLevels) return "mip levels";
    if (!hasPictures) return {};
    const std::string_view format = input.format_name();
    return format == "tiff" ? "further pages" : format == "dpx" ? "a second picture" : "further pictures";
}

/// The library takes every TIFF with a camera's entries as sRGB, also floats, which nobody stores so.
bool isMereGuess(const OIIO::ImageInput& input, const OIIO::ParamValue& value) {
    const OIIO::ImageSpec& spec = input.spec();
    return value.name() == "oiio:ColorSpace" && std::string_view(input.format_name()) == "tiff" &&
           spec.format.is_floating_point() && spec.find_attribute("Exif:ColorSpace") == nullptr;
}

class StillsReader : public FrameReader {
public:
    StillsReader(const std::string& path, const Limits& limits) : m_path(path) {
        const InputFile file(path);
        if (fileExtension(path) == "dpx") checkDpx(file);
        const TiffLock lock(fileExtension(path));
        m_input = OIIO::ImageInput::open(path);
        if (!m_input) throw ImageError(path, "cannot be read as an image (" + oneLine(OIIO::geterror()) + ")");
        const OIIO::ImageSpec& spec = m_input->spec();
        checkSize(path, spec, limits);
        m_header.format = m_input->format_name();
        m_header.parts.emplace_back();
        Part& part = m_header.parts.front();
        part.dataWindow = {spec.x, spec.y, spec.x + spec.width - 1, spec.y + spec.height - 1};
        part.displayWindow = {spec.full_x, spec.full_y, spec.full_x + spec.full_width - 1,
                              spec.full_y + spec.full_height - 1};
        const float aspect = spec.get_float_attribute("PixelAspectRatio", 1.0f);
        part.pixelAspectRatio = aspect >= 1e-6f && aspect <= 1e6f ? aspect : 1.0f;
        part.compression = spec.get_string_attribute("compression");
        for (int i = 0; i < spec.nchannels; ++i) {
            Channel channel;
            channel.name = spec.channelnames[static_cast<std::size_t>(i)];
            channel.type = nativeType(spec.channelformat(i));
            part.channels.push_back(channel);
        }
        for (const OIIO::ParamValue& value : spec.extra_attribs)
            if (!isMereGuess(*m_input, value)) part.attributes.push_back(attributeFrom(value));
        const std::string dropped = droppedPicturesOf(*m_input); // changes the library's description
        if (!dropped.empty()) part.attributes.push_back({droppedPicturesAttribute, "string", dropped});
        part.layOutPlanes();
    }
    ~StillsReader() override {
        const TiffLock lock(m_header.format);
        m_input.reset();
    }

    Frame readHeader(std::int64_t) override { return m_header; }

    void readPixels(Frame& frame, unsigned, std::int64_t) override {
        frame.assignHeader(m_header);
        Part& part = frame.parts.front();
        try {
            part.allocatePixels();
        } catch (const std::bad_alloc&) {
            throw ImageError(m_path, "not enough memory for its pixels");
        }
        const TiffLock lock(m_header.format);
        for (std::size_t p = 0; p < part.planes.size(); ++p) {
            Plane& plane = part.planes[p];
            const std::size_t size = bytesPerSample(plane.type);
            std::vector<int> members(plane.components, -1);
            for (std::size_t i = 0; i < part.channels.size(); ++i)
                if (part.channels[i].plane == p) members[part.channels[i].component] = static_cast<int>(i);
            // Neighbours in the file that are neighbours in the plane come in one go: usually R, G, B, A.
            for (std::size_t first = 0; first < members.size();) {
                std::size_t end = first + 1;
                while (end < members.size() && members[end] == members[end - 1] + 1) ++end;
                if (!m_input->read_image(0, 0, members[first], members[end - 1] + 1, oiioType(plane.type),
                                         plane.pixels.data() + first * size,
                                         static_cast<OIIO::stride_t>(plane.components * size),
                                         static_cast<OIIO::stride_t>(plane.rowBytes()))) {
                    const std::string cause = oneLine(m_input->geterror());
                    throw ImageError(m_path, "the pixels could not be read (" + cause +
                                                 "); the file is incomplete or damaged, copy or render it again");
                }
                first = end;
            }
        }
    }

private:
    std::string m_path;
    std::unique_ptr<OIIO::ImageInput> m_input;
    Frame m_header;
};

/// Header entries that repeat what the library's description of the image says itself.
bool isStructural(const std::string& name) {
    constexpr std::array<const char*, 16> names{"channels",
                                                "compression",
                                                "dataWindow",
                                                "displayWindow",
                                                "lineOrder",
                                                "pixelAspectRatio",
                                                "screenWindowCenter",
                                                "screenWindowWidth",
                                                "tiles",
                                                "type",
                                                "name",
                                                "chunkCount",
                                                "version",
                                                "preview",
                                                "PixelAspectRatio",
                                                "oiio:subimages"};
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Whether an attribute tells something about the picture, and not a writer how to write: the writer would heed it
/// wherever it came from, and turn R, G, B into C, M, Y, K, or lines into padded ones.
bool isMetadata(const std::string& name) {
    constexpr std::array<const char*, 3> descriptions{"oiio:BitsPerSample", "oiio:ColorSpace", "oiio:Gamma"};
    if (name.starts_with("oiio:"))
        return std::find(descriptions.begin(), descriptions.end(), name) != descriptions.end();
    constexpr std::array<const char*, 6> hints{"CompressionQuality",    "planarconfig",   "dpx:EndOfLinePadding",
                                               "dpx:EndOfImagePadding", "dpx:EncryptKey", "dpx:ImageDescriptor"};
    if (std::find(hints.begin(), hints.end(), name) != hints.end()) return false;
    return !name.starts_with('_') && !name.starts_with("tiff:") && !name.starts_with("png:") &&
           !name.starts_with("jpeg:");
}

} // namespace

extern "C" {
__attribute__((visibility("default"))) FrameReader* orvexOpenReader(const std::string& path, const Limits& limits);
__attribute__((visibility("default"))) void orvexEncodeFrame(const std::string& path, const Frame& frame,
                                                             const WriteOptions& options, MemoryFile& file);
}

FrameReader* orvexOpenReader(const std::string& path, const Limits& limits) {
    setUpLibrary();
    return new StillsReader(path, limits);
}

void orvexEncodeFrame(const std::string& path, const Frame& frame, const WriteOptions& options, MemoryFile& memory) {
    setUpLibrary();
    const StillFormat& format = StillFormat::of(path);
    format.check(path, frame, options);
    const Part& part = frame.parts.front();
    const TiffLock lock(format.extension);
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(format.extension);
    if (!output) throw ImageError(path, "cannot be written: " + oneLine(OIIO::geterror()));

    // R, G, B, A and the rest in the planes' order.
    std::vector<const Channel*> channels;
    for (std::size_t p = 0; p < part.planes.size(); ++p)
        for (std::size_t c = 0; c < part.planes[p].components; ++c)
            for (const Channel& channel : part.channels)
                if (channel.plane == p && channel.component == c) channels.push_back(&channel);
    const std::size_t width = static_cast<std::size_t>(part.dataWindow.width());
    const std::size_t height = static_cast<std::size_t>(part.dataWindow.height());
    bool oneType = true;
    for (const Plane& plane : part.planes) oneType = oneType && plane.type == part.planes.front().type;

    const PixelType type = oneType ? part.planes.front().type : PixelType::Float;
    OIIO::ImageSpec spec(static_cast<int>(width), static_cast<int>(height), static_cast<int>(channels.size()),
                         oiioType(format.stored(type, options)));
    spec.x = part.dataWindow.minX;
    spec.y = part.dataWindow.minY;
    spec.full_x = part.displayWindow.minX;
    spec.full_y = part.displayWindow.minY;
    spec.full_width = static_cast<int>(part.displayWindow.width());
    spec.full_height = static_cast<int>(part.displayWindow.height());
    spec.channelnames.clear();
    spec.alpha_channel = -1;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        spec.channelnames.push_back(channels[i]->name);
        if (channels[i]->colourPlace() == 3) spec.alpha_channel = static_cast<int>(i);
    }
    std::size_t room = format.maxMetadataBytes;
    for (const Attribute& attribute : part.attributes) {
        if (isStructural(attribute.name) || !isMetadata(attribute.name) || attribute.value.size() > room) continue;
        room -= attribute.value.size();
        setAttribute(spec, attribute);
    }
    // Bits a sample mean what they did only where the samples are stored as they were.
    const std::size_t storedBits = 8 * bytesPerSample(format.stored(type, options));
    if (options.pixelType || frame.format != output->format_name() ||
        spec.get_int_attribute("oiio:BitsPerSample") > static_cast<int>(storedBits))
        spec.erase_attribute("oiio:BitsPerSample");
    spec.attribute("PixelAspectRatio", part.pixelAspectRatio);
    if (options.compression)
        spec.attribute("compression", *options.compression);
    else if (output->format_name() == frame.format && !part.compression.empty())
        spec.attribute("compression", part.compression);
    // Writers stamp the present time otherwise, and no two renders would be equal.
    if (spec.find_attribute("DateTime") == nullptr) spec.attribute("DateTime", fixedDate);

    // One interleaved picture.
    std::vector<std::uint8_t> pixels;
    const std::uint8_t* samples = part.planes.front().pixels.data();
    const std::size_t size = bytesPerSample(type);
    if (part.planes.size() > 1 || !oneType) {
        try {
            pixels.resize(width * height * channels.size() * size);
        } catch (const std::bad_alloc&) {
            throw ImageError(path, "cannot be written: not enough memory for its pixels");
        }
        std::vector<float> floats;
        std::size_t done = 0;
        for (const Plane& plane : part.planes) {
            const std::size_t run = plane.components * size;
            for (std::size_t y = 0; y < height; ++y) {
                const std::uint8_t* row = plane.row(y);
                if (plane.type != type) {
                    floats.resize(width * plane.components);
                    plane.rowToFloat(y, floats.data());
                    row = reinterpret_cast<const std::uint8_t*>(floats.data());
                }
                std::uint8_t* const to = pixels.data() + y * width * channels.size() * size + done * size;
                for (std::size_t x = 0; x < width; ++x)
                    std::memcpy(to + x * channels.size() * size, row + x * run, run);
            }
            done += plane.components;
        }
        samples = pixels.data();
    }
    // By name and into memory: TIFF's writer reads back what it has written, and does not tell when a write fails as
    // the file is closed.
    if (!output->open(memory.path(), spec)) throw ImageError(path, "cannot be written: " + oneLine(output->geterror()));
    const bool isWritten = output->write_image(oiioType(type), samples);
    std::string problem = isWritten ? "" : output->geterror();
    const bool isClosed = output->close();
    if (!isClosed && problem.empty()) problem = output->geterror();
    if (!isWritten || !isClosed) throw ImageError(path, "cannot be written: " + oneLine(problem));
    // The name that the file has while it is written says nothing to its readers, and makes two renders differ.
    if (output->format_name() == std::string("dpx") && memory.size() > dpxNameOffset + dpxNameSize)
        memory.write(std::array<char, dpxNameSize>{}.data(), dpxNameSize, dpxNameOffset);
}

} // namespace Image
