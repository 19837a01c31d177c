#pragma once

#include <string>

#include "Image/Frame.h"
#include "Image/FrameWriter.h"

namespace HostImage {

/// What the formats of stills other than OpenEXR hold. Those that are read by name alone are not listed: a format is
/// written only where it is known that what is written can be read again as it was.
struct StillFormat {
    const char* extension; ///< as fileExtension gives it
    const char* name;      ///< for messages
    const char* wider;     ///< the format that a message advises where this one has no room
    std::int64_t maxSide;  ///< pixels
    /// Bytes of all attributes together; what finds no room is left out.
    std::size_t maxMetadataBytes;
    bool hasGrey;              ///< one channel, Y
    bool hasGreyWithAlpha;     ///< Y and A
    bool hasAlpha;             ///< R, G, B and A
    bool hasIntegersOf32Bits;  ///< UInt32
    bool hasFloats;            ///< Half is stored as Float
    bool hasPictureInAPicture; ///< a data window inside the display window

    /// The format of that extension. Throws ImageError, naming the path, for one that is not written.
    static const StillFormat& of(const std::string& path);

    /// Throws ImageError, naming the path and with what to do instead, if the frame does not fit. Its pixels may be
    /// missing.
    void check(const std::string& path, const Frame& frame, const WriteOptions& options) const;

    /// How samples of that type are stored: in the nearest type that the format has.
    PixelType stored(PixelType type, const WriteOptions& options) const;
};

} // namespace HostImage
