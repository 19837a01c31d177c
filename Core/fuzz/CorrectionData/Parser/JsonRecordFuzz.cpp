// The record that a frame carries: parsed, its recording format worked out and fitted, or the one documented error.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "Core/ExtendedManagedContainer.h"
#include "CorrectionData/Parser/JsonParser.h"
#include "Exception/Exception.h"
#include "Support/Fit.h"
#include "Support/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string json(reinterpret_cast<const char*>(data), size);
    CorrectionData::Header header;
    CorrectionData::Frame frame;
    try {
        CorrectionData::JsonParser::parse(json, header, frame);
    } catch (const Exception& exception) {
        REQUIRE(std::strcmp(exception.what(), "JSON metadata string has an invalid format.") == 0);
        REQUIRE(header.cameraManufacturer.empty() && frame.heights.empty());
        return 0;
    }
    for (const auto* values : {&frame.heights, &frame.shading, &frame.radialDistortion}) {
        REQUIRE(values->size() == 6 || values->size() == 7);
    }
    Support::fit(frame);
    Core::ExtendedManagedContainer container(json);
    container.recordingFormat();
    return 0;
}
