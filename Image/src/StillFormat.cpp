#include "StillFormat.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "Files.h"
#include "ImageError.h"

namespace Image {

namespace {

constexpr std::int64_t anySide = std::int64_t{1} << 31;
constexpr std::size_t anySize = std::numeric_limits<std::size_t>::max();
/// JPEG's blocks have 64 KiB, a text takes up to six times its length there, and the library ends the process beyond.
constexpr std::size_t jpegSize = 8192;
constexpr std::array<StillFormat, 6> formats{{
    // extension, name, wider, maxSide, metadata, grey, grey + A, RGBA, 32-bit integers, floats, picture in a picture,
    // linear light
    {"dpx", "DPX", ".exr", anySide, anySize, false, false, true, false, false, true, true},
    {"tif", "TIFF", ".exr", anySide, anySize, true, true, true, true, true, false, true},
    {"tiff", "TIFF", ".exr", anySide, anySize, true, true, true, true, true, false, true},
    {"png", "PNG", ".tif or .exr", 1'000'000, anySize, true, true, true, false, false, false, true},
    {"jpg", "JPEG", ".png, .tif or .exr", 65500, jpegSize, true, false, false, false, false, false, false},
    {"jpeg", "JPEG", ".png, .tif or .exr", 65500, jpegSize, true, false, false, false, false, false, false},
}};

/// The names of all channels, colours in capitals and in the order R, G, B, A, the others after them: "RGBA", "YA".
std::vector<std::string> sortedNames(const Part& part) {
    std::vector<std::string> names;
    for (const Channel& channel : part.channels) {
        const bool isColour = channel.layer().empty() && channel.colourPlace() < 4;
        names.push_back(isColour ? std::string(1, "RGBA"[channel.colourPlace()]) : channel.name);
    }
    const auto place = [](const std::string& name) {
        return name.size() == 1 ? std::min(std::string("RGBYA").find(name), std::size_t{9}) : std::size_t{9};
    };
    std::stable_sort(names.begin(), names.end(),
                     [&](const std::string& a, const std::string& b) { return place(a) < place(b); });
    return names;
}

std::string listed(const std::vector<std::string>& names) {
    constexpr std::size_t most = 6;
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), most); ++i) text += (i == 0 ? "" : ", ") + names[i];
    return names.size() > most ? text + " and " + std::to_string(names.size() - most) + " more" : text;
}

} // namespace

const StillFormat& StillFormat::of(const std::string& path) {
    const std::string extension = fileExtension(path);
    for (const StillFormat& format : formats)
        if (extension == format.extension) return format;
    throw ImageError(path, "cannot be written: " +
                               (extension.empty() ? "its name has no extension"
                                                  : "\"." + extension + "\" is not a supported output format") +
                               "; choose .exr, .dpx, .tif, .png or .jpg");
}

void StillFormat::check(const std::string& path, const Frame& frame, const WriteOptions& options) const {
    const auto refuse = [&](const std::string& problem, const std::string& advice) {
        throw ImageError(path, "cannot be written: " + problem + "; " + advice);
    };
    if (frame.parts.size() != 1) refuse("the frame has several parts, which only OpenEXR holds", "choose .exr");
    const Part& part = frame.parts.front();
    const std::vector<std::string> names = sortedNames(part);
    using Names = std::vector<std::string>;
    if (!(names == Names{"R", "G", "B"} || (hasAlpha && names == Names{"R", "G", "B", "A"}) ||
          (hasGrey && names == Names{"Y"}) || (hasGreyWithAlpha && names == Names{"Y", "A"}))) {
        std::string held = "R, G, B";
        if (hasAlpha) held += "; R, G, B, A";
        if (hasGrey) held += "; Y";
        if (hasGreyWithAlpha) held += "; Y, A";
        refuse("the frame has the channels " + listed(names) + ", but " + name + " holds only " + held,
               std::string("choose ") + (names == Names{"R", "G", "B", "A"} ? wider : ".exr"));
    }
    for (const Channel& channel : part.channels) {
        if (channel.xSampling != 1 || channel.ySampling != 1)
            refuse("only OpenEXR holds sub-sampled channels", "choose .exr");
        if (channel.type == PixelType::UInt32 && !hasIntegersOf32Bits)
            refuse("channel " + channel.name + " has 32-bit integers, which " + name + " cannot hold", "choose .exr");
    }
    if (options.pixelType && !hasFloats)
        refuse(std::string(name) + " cannot hold half or float pixels", "omit --type, or choose .tif or .exr");
    const Window& data = part.dataWindow;
    const Window& display = part.displayWindow;
    if (std::max(data.width(), data.height()) > maxSide)
        refuse("the picture of " + std::to_string(data.width()) + " x " + std::to_string(data.height()) +
                   " pixels exceeds " + name + "'s limit of " + std::to_string(maxSide) + " pixels a side",
               "choose .exr");
    // Offsets are stored without a sign, so there is no room around the picture even where there is one inside.
    const bool isInside = data.minX >= display.minX && data.minY >= display.minY && data.maxX <= display.maxX &&
                          data.maxY <= display.maxY;
    if (data != display && !(isInside && hasPictureInAPicture))
        refuse(isInside ? "this format cannot hold a data window smaller than the display window"
                        : "this format cannot hold pixels outside the display window",
               "choose .exr, or crop the frame to its format");
}

PixelType StillFormat::stored(PixelType type, const WriteOptions& options) const {
    if (options.pixelType || type == PixelType::Half || type == PixelType::Float)
        return hasFloats ? PixelType::Float : PixelType::UInt16;
    return type;
}

} // namespace Image
