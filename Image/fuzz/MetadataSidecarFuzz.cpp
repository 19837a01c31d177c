// The file of camera metadata beside a clip: values, or an error that can be shown; nothing else may leave.

#include <cstddef>
#include <cstdint>
#include <string>

#include "ImageError.h"
#include "MetadataSidecar.h"
#include "Support/Require.h"
#include "Support/TemporaryFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Support::TemporaryFolder folder;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string path = folder.write("a.metadata.json", text);
    REQUIRE(!Image::MetadataSidecar::pathFor(text).empty());
    try {
        const Image::MetadataSidecar sidecar(path);
        for (const std::int64_t frame : {0, 1001}) {
            for (const auto& [key, value] : sidecar.values(frame)) Image::metadataText(value);
        }
    } catch (const Image::ImageError& error) {
        REQUIRE(std::string(error.what()).starts_with(path));
    }
    return 0;
}
