#pragma once

#include "DDImage/ImagePlaneDescriptor.h"
#include "DDImage/RefCountedFloatBuffer.h"

namespace DD {
namespace Image {

/// Pixels of a box for up to four channels of one layer, as floats, starting at the bottom left pixel, rows upward.
///
/// Packed: the components of a pixel are adjacent, in ascending order of channels. Unpacked: one channel's whole image
/// after the other. Strides are in floats. A copy of a plane shares its floats; before writing, call `makeUnique`
/// (copies shared floats) and `makeWritable` (allocates missing ones). `writable` without them is a programming error
/// that would corrupt another plane: it prints what is wrong and aborts.
class ImagePlane : public ImagePlaneDescriptor {
public:
    ImagePlane() = default;
    explicit ImagePlane(const Box& bounds);
    ImagePlane(const Box& bounds, bool packed, ChannelSet mask);
    ImagePlane(const Box& bounds, bool packed, ChannelSet mask, int nComps);

    const float* readable() const { return m_memory; }
    float* writable();
    void makeWritable();
    void makeUnique();
    /// width × height × nComps × 4 bytes; 0 if no floats are allocated.
    std::size_t usage() const { return m_memory.usage(); }
    /// Sets every float to zero; the plane must be writable.
    void clear();

    /// The component that holds a channel; -1 if the plane does not have it.
    int chanNo(Channel) const;
    int colStride() const { return packed() ? nComps() : 1; }
    int rowStride() const { return packed() ? bounds().w() * nComps() : bounds().w(); }
    int chanStride() const { return packed() ? 1 : bounds().w() * bounds().h(); }

    const RefCountedFloatBuffer& memory() const { return m_memory; }
    /// Shares the given floats; their layout must be this plane's.
    void setMemory(RefCountedFloatBuffer& memory) { m_memory = memory; }

    /// One float; z is the component. The position must be inside the plane, which must have floats.
    float at(int x, int y, int z) const { return readable()[offset(x, y, z)]; }
    float& writableAt(int x, int y, int z) { return writable()[offset(x, y, z)]; }

    /// Copies the channels that both planes have, where their boxes overlap. This plane must be writable.
    void copyIntersectionFrom(const ImagePlane& source);

private:
    std::ptrdiff_t offset(int x, int y, int z) const;

    RefCountedFloatBuffer m_memory;
};

} // namespace Image
} // namespace DD
