#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "PixelBuffer.h"

namespace Image {

/// A rectangle of pixels: corners inclusive, y grows downwards, as in OpenEXR. Empty if a maximum is below its minimum.
struct Window {
    std::int32_t minX = 0;
    std::int32_t minY = 0;
    std::int32_t maxX = -1;
    std::int32_t maxY = -1;

    std::int64_t width() const { return std::int64_t{maxX} - minX + 1; }
    std::int64_t height() const { return std::int64_t{maxY} - minY + 1; }
    bool operator==(const Window&) const = default;
};

/// How a channel's samples are stored. UInt8 and UInt16 mean 0 … 1 when taken as floats; UInt32 means plain numbers
/// (IDs).
enum class PixelType { UInt8, UInt16, UInt32, Half, Float };

/// Bytes of one sample: 1, 2, 4, 2, 4.
std::size_t bytesPerSample(PixelType type);

/// How many samples a channel has at the coordinates minimum … maximum: those that divide by `sampling`; 0 if the
/// maximum is less than the minimum.
std::size_t samplesBetween(std::int64_t minimum, std::int64_t maximum, std::int64_t sampling);

/// One channel of a part and where its samples are.
struct Channel {
    /// As in the file, with its layer: "R", "beauty.R".
    std::string name;
    PixelType type = PixelType::Half;
    /// A sample for every xSampling-th column and ySampling-th row (those whose coordinate divides by it).
    std::int32_t xSampling = 1;
    std::int32_t ySampling = 1;
    /// OpenEXR's hint for lossy compression; carried, not used.
    bool perceptuallyLinear = false;
    /// Which of the part's planes holds the samples, and the place in that plane's pixels (0 … 3).
    std::size_t plane = 0;
    std::size_t component = 0;

    /// "" for "R", "beauty" for "beauty.R", "a.b" for "a.b.R".
    std::string_view layer() const;
    /// "R" for "R" and for "beauty.R".
    std::string_view baseName() const;
    /// 0 … 3 for R, G, B, A of any layer, in upper or lower case; 4 for other channels.
    std::size_t colourPlace() const;
};

/// Samples of one to four channels of one layer, of one type, interleaved: row by row from the window's top row,
/// without gaps; pixel by pixel; component by component. R, G, B, A of a layer come in this order whatever the file's
/// order is, so an RGBA layer is one run of width × height × 4 samples. Y (luminance) counts as a channel of its own.
struct Plane {
    PixelType type = PixelType::Half;
    std::size_t components = 0;
    /// Samples per row and rows: the data window's size unless the channels are sub-sampled.
    std::size_t width = 0;
    std::size_t height = 0;
    /// Empty after readHeader; width × height × components × bytesPerSample(type) bytes after readPixels.
    PixelBuffer pixels;

    std::size_t rowBytes() const { return width * components * bytesPerSample(type); }
    std::uint8_t* row(std::size_t y) { return pixels.data() + y * rowBytes(); }
    const std::uint8_t* row(std::size_t y) const { return pixels.data() + y * rowBytes(); }
    /// Gives the plane memory for its pixels; contents undefined. Throws std::bad_alloc.
    void allocatePixels();
    /// Row y (0 = the top row) as width × components floats, by the rule given at PixelType.
    void rowToFloat(std::size_t y, float* samples) const;
    /// The reverse; integers are rounded and clamped, NaN becomes 0.
    void rowFromFloat(std::size_t y, const float* samples);
};

/// A, B, G and R of 32-bit floats, in the order in which OpenEXR keeps them.
std::vector<Channel> floatRgbaChannels();

/// One metadata entry, kept as bytes so that nothing is lost on the way through. Types are named as in OpenEXR
/// ("string", "int", "timecode", "box2i", …) and values laid out as there: little-endian, text without its length or a
/// terminator. Entries of other formats that have no such type are "oiio/<type>".
struct Attribute {
    std::string name;
    std::string type;
    std::string value;
    bool operator==(const Attribute&) const = default;
};

enum class LineOrder { IncreasingY, DecreasingY, RandomY };

/// One picture of a file (most files have one).
struct Part {
    /// Empty where a file with one part does not name it.
    std::string name;
    Window dataWindow;
    Window displayWindow;
    float pixelAspectRatio = 1.0f;
    /// "none", "rle", "zips", "zip", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab", or another format's own name.
    std::string compression = "zip";
    LineOrder lineOrder = LineOrder::IncreasingY;
    /// Both 0: scan lines. Of files with several levels of detail the largest one is read and written.
    std::uint32_t tileWidth = 0;
    std::uint32_t tileHeight = 0;
    /// In the file's order.
    std::vector<Channel> channels;
    std::vector<Plane> planes;
    /// Everything the header holds, in the file's order, including the entries that repeat fields above ("dataWindow",
    /// …). A writer takes those from the fields.
    std::vector<Attribute> attributes;

    const Channel* findChannel(std::string_view channelName) const;
    /// Index of the first channel whose samples lie in the plane (there is one): all of them have its type and
    /// sampling.
    std::size_t firstChannelOf(std::size_t plane) const;
    const Attribute* findAttribute(std::string_view attributeName) const;
    /// Replaces the entry of that name or appends it.
    void setAttribute(const Attribute& attribute);
    void removeAttribute(std::string_view attributeName);
    /// Text attribute of that name, or "".
    std::string text(std::string_view attributeName) const;

    /// Sets every channel's plane and component, and the planes' shapes, from channels and dataWindow: the channels of
    /// one layer with one type and sampling share a plane, up to four; R, G, B, A first. Call after changing either;
    /// pixels keep their memory where the plane count allows.
    void layOutPlanes();
    /// Plane::allocatePixels for every plane.
    void allocatePixels();
};

/// A file's pictures and metadata; a plain value.
struct Frame {
    /// Which reader it came from: "exr", "dpx", "tiff", "png", "mov", …
    std::string format;
    std::vector<Part> parts;

    /// Becomes `header` (whose planes have no memory) but keeps the memory of its own planes for the next pixels.
    void assignHeader(const Frame& header);
};

/// n samples to floats and back, by the rules given at PixelType and Plane::rowFromFloat.
void samplesToFloat(PixelType type, const void* samples, float* floats, std::size_t n);
void samplesFromFloat(PixelType type, const float* floats, void* samples, std::size_t n);

} // namespace Image
