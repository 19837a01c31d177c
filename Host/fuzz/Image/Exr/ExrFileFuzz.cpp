// An EXR file of any bytes: its header, the metadata made of it and its pixels, or an error that can be shown. OpenEXR
// itself is as the system has it, not instrumented; what it decodes stays small.

#include <cstddef>
#include <cstdint>
#include <string>

#include "Image/FrameReader.h"
#include "Image/HostMetadata.h"
#include "Support/Require.h"
#include "Support/TemporaryFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Support::TemporaryFolder folder;
    const std::string path = folder.write("a.1001.exr", std::string(reinterpret_cast<const char*>(data), size));
    constexpr HostImage::Limits limits{4096, 1 << 16, 64, 1 << 22};
    try {
        const auto reader = HostImage::openReader(path, limits);
        HostImage::Frame frame = reader->readHeader();
        REQUIRE(!frame.parts.empty());
        for (const auto& [key, value] : HostImage::hostMetadata(frame, path, 1001)) HostImage::metadataText(value);
        reader->readPixels(frame);
        for (const HostImage::Part& part : frame.parts) {
            for (const HostImage::Channel& channel : part.channels) REQUIRE(channel.plane < part.planes.size());
            for (const HostImage::Plane& plane : part.planes) {
                REQUIRE(plane.pixels.size() == plane.rowBytes() * plane.height);
            }
        }
    } catch (const HostImage::ImageError& error) {
        REQUIRE(std::string(error.what()).starts_with(path));
    }
    return 0;
}
