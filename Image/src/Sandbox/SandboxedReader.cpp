#include "Sandbox/SandboxedReader.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "ImageError.h"
#include "Sandbox/CodecChild.h"
#include "Sandbox/CodecProcess.h"
#include "Sandbox/FrameMessage.h"

namespace Image {

namespace {

/// The shared memory's size: more than any frame has, and taken only where something is written.
constexpr off_t sharedBytes = off_t{1} << 45;

/// Memory that the other process writes to. Its size is sealed, so that nobody makes it shorter while it is read.
class SharedPixels {
public:
    SharedPixels() : m_descriptor(::memfd_create("lenscorrect", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
        if (m_descriptor < 0) throw std::bad_alloc();
        if (::ftruncate(m_descriptor, sharedBytes) == 0 &&
            ::fcntl(m_descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0)
            return;
        ::close(m_descriptor);
        throw std::bad_alloc();
    }
    ~SharedPixels() { ::close(m_descriptor); }
    SharedPixels(const SharedPixels&) = delete;
    SharedPixels& operator=(const SharedPixels&) = delete;

    int descriptor() const { return m_descriptor; }

    /// Copies the planes' pixels out. Throws std::bad_alloc.
    void copyTo(Frame& frame) const {
        const std::vector<std::uint64_t> offsets = sharedOffsets(frame);
        if (offsets.back() == 0) return;
        void* const memory = ::mmap(nullptr, offsets.back(), PROT_READ, MAP_SHARED | MAP_POPULATE, m_descriptor, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        std::size_t index = 0;
        for (Part& part : frame.parts)
            for (Plane& plane : part.planes)
                std::memcpy(plane.pixels.data(), static_cast<const std::uint8_t*>(memory) + offsets[index++],
                            plane.pixels.size());
        ::munmap(memory, offsets.back());
    }

private:
    int m_descriptor;
};

FrameMessage readMessage(CodecChild& child, const CodecProcess& order) {
    try {
        return FrameMessage::parse(child.answer(CodecProcess::Reply::Frame, FrameMessage::maxBytes), order.limits);
    } catch (const FrameMessageError& error) {
        child.fail(std::string("the sandboxed decoder returned something that is not a frame (") + error.what() +
                   "); the file is damaged or malicious");
    }
}

} // namespace

SandboxedReader::SandboxedReader(const std::string& path, const Limits& limits, const SandboxLimits& sandbox,
                                 const std::string& program)
    : m_path(path), m_limits(limits), m_sandbox(sandbox), m_program(program) {}

FrameMessage SandboxedReader::headerMessage(std::int64_t index) const {
    const CodecProcess order{m_path, m_limits, m_sandbox, CodecProcess::Task::DecodeHeader, 1, index};
    CodecChild child(order, m_program);
    return readMessage(child, order);
}

std::int64_t SandboxedReader::frameCount() const { return m_frameCount ? *m_frameCount : headerMessage(0).frameCount; }

Frame SandboxedReader::readHeader(std::int64_t index) {
    FrameMessage message = headerMessage(index);
    m_frameCount = message.frameCount;
    return std::move(message.frame);
}

void SandboxedReader::readPixels(Frame& frame, unsigned threads, std::int64_t index) {
    const CodecProcess order{m_path, m_limits, m_sandbox, CodecProcess::Task::DecodePixels, std::max(threads, 1u),
                             index};
    try {
        const SharedPixels pixels;
        CodecChild child(order, m_program, pixels.descriptor());
        frame.assignHeader(readMessage(child, order).frame);
        child.finish();
        for (Part& part : frame.parts) part.allocatePixels();
        pixels.copyTo(frame);
    } catch (const std::bad_alloc&) {
        throw ImageError(m_path, "not enough memory for its pixels");
    }
}

} // namespace Image
