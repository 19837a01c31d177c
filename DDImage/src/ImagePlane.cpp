#include "DDImage/ImagePlane.h"

#include "Stop.h"

#include <cstring>

namespace DD {
namespace Image {

ImagePlane::ImagePlane(const Box& bounds) : ImagePlaneDescriptor(bounds, false, Mask_None, 0) {}

ImagePlane::ImagePlane(const Box& bounds, bool packed, ChannelSet mask)
    : ImagePlaneDescriptor(bounds, packed, mask, static_cast<int>(mask.size())) {}

ImagePlane::ImagePlane(const Box& bounds, bool packed, ChannelSet mask, int nComps)
    : ImagePlaneDescriptor(bounds, packed, mask, nComps) {}

float* ImagePlane::writable() {
    if (m_memory.refCount() == 0) stop("ImagePlane::writable() without floats: makeWritable() was not called");
    if (m_memory.refCount() > 1) stop("ImagePlane::writable() on shared floats: makeUnique() was not called");
    return m_memory;
}

void ImagePlane::makeWritable() {
    if (m_memory.refCount() == 0)
        m_memory = RefCountedFloatBuffer::allocate(bounds(), nComps(), colStride(), rowStride(), chanStride());
}

void ImagePlane::makeUnique() {
    if (m_memory.refCount() < 2) return;
    const RefCountedFloatBuffer shared = m_memory;
    m_memory.reset();
    makeWritable();
    std::memcpy(writable(), static_cast<const float*>(shared), usage());
}

void ImagePlane::clear() { std::memset(writable(), 0, usage()); }

int ImagePlane::chanNo(Channel channel) const {
    const ChannelSet held = channels();
    int component = 0;
    for (Channel z = held.first(); z != Chan_Black; z = held.next(z), ++component)
        if (z == channel) return component;
    return -1;
}

std::ptrdiff_t ImagePlane::offset(int x, int y, int z) const {
    const Box box = bounds();
    return std::ptrdiff_t{y - box.y()} * rowStride() + std::ptrdiff_t{x - box.x()} * colStride() +
           std::ptrdiff_t{z} * chanStride();
}

void ImagePlane::copyIntersectionFrom(const ImagePlane& source) {
    Box common = bounds();
    if (!common.intersects(source.bounds())) return;
    common.intersect(source.bounds());
    float* const target = writable();
    const float* const floats = source.readable();
    if (packed() && source.packed() && channels() == source.channels() && nComps() == source.nComps()) {
        const std::size_t bytes = static_cast<std::size_t>(common.w() * nComps()) * sizeof(float);
        for (int row = common.y(); row < common.t(); ++row)
            std::memcpy(target + offset(common.x(), row, 0), floats + source.offset(common.x(), row, 0), bytes);
        return;
    }
    const ChannelSet held = channels();
    for (Channel z = held.first(); z != Chan_Black; z = held.next(z)) {
        const int from = source.chanNo(z);
        if (from < 0) continue;
        for (int row = common.y(); row < common.t(); ++row) {
            float* to = target + offset(common.x(), row, chanNo(z));
            const float* in = floats + source.offset(common.x(), row, from);
            for (int i = 0; i < common.w(); ++i, to += colStride(), in += source.colStride()) *to = *in;
        }
    }
}

} // namespace Image
} // namespace DD
