#pragma once

#include <string>

#include "Frame.h"
#include "FrameWriter.h"

namespace Image {

/// What the formats of stills other than OpenEXR can hold. Formats that are only read are not listed: a format is
/// written only if its files are known to read back unchanged.
struct StillFormat {
    const char* extension; ///< as fileExtension gives it
    const char* name;      ///< for messages
    const char* wider;     ///< the format that a message suggests if this one cannot hold the frame
    std::int64_t maxSide;  ///< pixels
    /// Bytes of all attributes together; what does not fit is left out.
    std::size_t maxMetadataBytes;
    bool hasGrey;              ///< one channel, Y
    bool hasGreyWithAlpha;     ///< Y and A
    bool hasAlpha;             ///< R, G, B and A
    bool hasIntegersOf32Bits;  ///< UInt32
    bool hasFloats;            ///< Half is stored as Float
    bool hasPictureInAPicture; ///< a data window inside the display window
    bool hasLinearLight; ///< files can state that their pixels are linear light, or hold floats, which are taken so

    /// The format of that extension. Throws ImageError, naming the path, for one that is not written.
    static const StillFormat& of(const std::string& path);

    /// Throws ImageError, naming the path and what to do instead, if the frame does not fit. Its pixels may be missing.
    void check(const std::string& path, const Frame& frame, const WriteOptions& options) const;

    /// How samples of that type are stored: in the nearest type that the format has.
    PixelType stored(PixelType type, const WriteOptions& options) const;
};

} // namespace Image
