#pragma once

#include "DDImage/ImagePlane.h"
#include "DDImage/IopInfo.h"
#include "DDImage/MetaData.h"

namespace DD {
namespace Image {

/// Supplies a Read with its clip. What a member throws becomes the Read's error and propagates no further. fillPlane
/// and fillMetaData may be called from several threads at once.
class ReadSource {
public:
    virtual ~ReadSource();

    /// Sets format, box (it is `info` itself), channels, first and last frame.
    virtual void fillInfo(double frame, IopInfo& info) = 0;
    virtual void fillMetaData(double frame, MetaData::Bundle& metaData) = 0;
    /// Fills the channels that the frame has, where the frame's box and the plane's overlap. The plane is black and
    /// writable, of any box, channels and packing. Instead of filling it, a source may share floats of the plane's
    /// exact layout by setMemory.
    ///
    /// A source that fillsWholePlanes gets uninitialised floats and writes all of them, black where it has no pixels.
    virtual void fillPlane(double frame, ImagePlane& plane) = 0;
    virtual bool fillsWholePlanes() const { return false; }
};

} // namespace Image
} // namespace DD
