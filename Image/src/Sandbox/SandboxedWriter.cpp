#include "Sandbox/SandboxedWriter.h"

#include <new>

#include "Files.h"
#include "ImageError.h"
#include "MemoryFile.h"
#include "Sandbox/CodecChild.h"
#include "Sandbox/FrameMessage.h"

namespace Image {

namespace {

/// What an encoder finds behind its pixelsDescriptor.
void share(const Frame& frame, MemoryFile& memory) {
    const std::string description = FrameMessage::bytesOf(frame, 1);
    const std::uint64_t size = description.size();
    memory.write(&size, sizeof size, 0);
    memory.write(description.data(), size, sizeof size);
    const std::uint64_t start = sharedPlace(sizeof size + size);
    const std::vector<std::uint64_t> offsets = sharedOffsets(frame);
    std::size_t index = 0;
    for (const Part& part : frame.parts)
        for (const Plane& plane : part.planes)
            memory.write(plane.pixels.data(), plane.rowBytes() * plane.height, start + offsets[index++]);
    memory.resize(start + offsets.back());
}

} // namespace

void writeFrameSandboxed(const std::string& path, const Frame& frame, const WriteOptions& options,
                         const SandboxLimits& sandbox, const std::string& program) {
    checkFrame(path, frame, options);
    if (fileExtension(path) == "exr") {
        writeFrame(path, frame, options);
        return;
    }
    checkPixels(path, frame);
    const Limits none{.maxSide = 0, .maxPixels = 0, .maxChannels = 0, .maxBytes = 0};
    CodecProcess order{path, none, sandbox, CodecProcess::Task::Encode, options.threads};
    order.compression = options.compression;
    order.pixelType = options.pixelType;
    try {
        MemoryFile pixels, file;
        share(frame, pixels);
        CodecChild child(order, program, pixels.descriptor(), file.descriptor());
        child.answer(CodecProcess::Reply::Encoded, 0);
        child.finish();
        storeFile(path, file, options);
    } catch (const std::bad_alloc&) {
        throw ImageError(path, "cannot be written: not enough memory for its pixels");
    }
}

} // namespace Image
