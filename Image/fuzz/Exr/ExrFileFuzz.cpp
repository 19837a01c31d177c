// An EXR file of any bytes: its header, the metadata made of it and its pixels, or an error that can be shown. OpenEXR
// itself is as the system has it, not instrumented; what it decodes stays small.

#include <cstddef>
#include <cstdint>
#include <string>

#include "FrameReader.h"
#include "HostMetadata.h"
#include "Support/Require.h"
#include "Support/TemporaryFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Support::TemporaryFolder folder;
    const std::string path = folder.write("a.1001.exr", std::string(reinterpret_cast<const char*>(data), size));
    constexpr Image::Limits limits{4096, 1 << 16, 64, 1 << 22};
    try {
        const auto reader = Image::openReader(path, limits);
        Image::Frame frame = reader->readHeader();
        REQUIRE(!frame.parts.empty());
        for (const auto& [key, value] : Image::hostMetadata(frame, path, 1001)) Image::metadataText(value);
        reader->readPixels(frame);
        for (const Image::Part& part : frame.parts) {
            for (const Image::Channel& channel : part.channels) REQUIRE(channel.plane < part.planes.size());
            for (const Image::Plane& plane : part.planes) {
                REQUIRE(plane.pixels.size() == plane.rowBytes() * plane.height);
            }
        }
    } catch (const Image::ImageError& error) {
        REQUIRE(std::string(error.what()).starts_with(path));
    }
    return 0;
}
