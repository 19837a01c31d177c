// The body of a correction file: frames within their ranges, or one of the two documented errors; nothing else may
// leave.

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Parser/Parser.h"
#include "Support/Require.h"

namespace {

void requireWithin(const std::vector<float>& values, float lowest, float highest) {
    REQUIRE(values.size() == 6 || values.size() == 7);
    for (const float value : values) REQUIRE(value >= lowest && value <= highest);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::map<std::uint32_t, CorrectionData::Frame> frames;
    try {
        CorrectionFile::Parser().parseBody(text, frames);
    } catch (const CorrectionFile::InvalidFormatException&) {
        REQUIRE(frames.empty());
    } catch (const boost::bad_lexical_cast&) {
        REQUIRE(frames.empty());
    }
    for (const auto& [number, frame] : frames) {
        REQUIRE(frame.frameNumber >= 0 && number == static_cast<std::uint32_t>(frame.frameNumber));
        REQUIRE(frame.shading.size() == frame.heights.size() && frame.radialDistortion.size() == frame.heights.size());
        requireWithin(frame.heights, 0.0f, 100.0f);
        requireWithin(frame.shading, 0.0f, 100.0f);
        requireWithin(frame.radialDistortion, -100.0f, 100.0f);
    }
    return 0;
}
