// The metadata that is made of a file's attributes, whatever these hold: every value can be shown.
//
// The input: the format on a line, then any number of attributes as "NAME TYPE LENGTH", a line feed and LENGTH bytes.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "HostMetadata.h"
#include "Support/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream input(std::string(reinterpret_cast<const char*>(data), size));
    Image::Frame header;
    std::getline(input, header.format);
    Image::Part& part = header.parts.emplace_back();
    Image::Attribute attribute;
    std::size_t length = 0;
    while (input >> attribute.name >> attribute.type >> length && input.get() != EOF) {
        attribute.value.assign(std::min(length, size), '\0');
        input.read(attribute.value.data(), static_cast<std::streamsize>(attribute.value.size()));
        attribute.value.resize(static_cast<std::size_t>(input.gcount()));
        part.attributes.push_back(attribute);
    }
    for (const auto& [key, value] : Image::hostMetadata(header, "/clip/a.1001.exr", 1001)) {
        REQUIRE(!key.empty());
        const std::string text = Image::metadataText(value);
        if (!std::holds_alternative<std::string>(value) && !std::holds_alternative<std::vector<int>>(value) &&
            !std::holds_alternative<std::vector<double>>(value)) {
            REQUIRE(!text.empty());
        }
    }
    return 0;
}
