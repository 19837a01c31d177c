#pragma once

#include "DDImage/Box.h"

#include <cstddef>

namespace DD {
namespace Image {

/// A handle to floats that several planes may share. Copying it shares the floats; the last handle frees them. Handles
/// may be copied and dropped on several threads at once; one handle belongs to one thread at a time.
class RefCountedFloatBuffer {
public:
    RefCountedFloatBuffer() = default;
    RefCountedFloatBuffer(const RefCountedFloatBuffer&);
    RefCountedFloatBuffer& operator=(const RefCountedFloatBuffer&);
    RefCountedFloatBuffer(RefCountedFloatBuffer&&) noexcept;
    RefCountedFloatBuffer& operator=(RefCountedFloatBuffer&&) noexcept;
    ~RefCountedFloatBuffer() { reset(); }

    /// Zeroed floats for every component of every pixel of the box; steps are in floats and describe their layout.
    /// Throws std::bad_alloc if memory runs out.
    static RefCountedFloatBuffer allocate(const Box&, int nComps, int pixelStep, int rowStep, int componentStep);

    /// The same without zeroing, for callers that write every float: zeroing takes about as long as filling.
    static RefCountedFloatBuffer allocateUninitialised(const Box&, int nComps);

    /// Null without floats.
    operator float*() { return data(); }
    operator const float*() const { return data(); }

    /// Bytes held; 0 without floats.
    std::size_t usage() const;
    /// How many handles share the floats; 0 without floats.
    int refCount() const;
    void reset();

private:
    struct Block;
    float* data() const;

    Block* m_block = nullptr;
};

} // namespace Image
} // namespace DD
