// Timecode text at any rate, written "RATE COUNT TEXT": parsing and the arithmetic that the core does with it.

#include <cstddef>
#include <cstdint>
#include <string>

#include "Support/Require.h"
#include "Text/StrictConversion.h"
#include "Timecode/Timecode.h"

namespace {

std::string takeWord(std::string& text) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string word = text.substr(0, end);
    text.erase(0, end + 1);
    return word;
}

void calculate(const Timecode::Timecode& timecode, std::uint32_t count) {
    const std::string written = timecode.string(false);
    REQUIRE(Timecode::Timecode(written.c_str(), timecode.framesPerSecond) == timecode);
    REQUIRE(!(timecode < timecode));
    REQUIRE(!timecode.string(true).empty());
    const Timecode::Timecode later = timecode + count;
    if (later < timecode) return; // the counters have wrapped
    // Frames from hour 0 on must be countable in 32 bits for the difference to come out.
    if (timecode.hours < 400 && later.hours < 400 && timecode.framesPerSecond <= 1000.0f) {
        REQUIRE(later - timecode == count);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    float rate = 0.0f;
    std::uint32_t count = 0;
    Text::convertStrictly(takeWord(text), rate);
    Text::convertStrictly(takeWord(text), count);
    try {
        calculate(Timecode::Timecode(text.c_str(), rate), count);
    } catch (const Timecode::InvalidTimecodeException&) {
    }
    return 0;
}
