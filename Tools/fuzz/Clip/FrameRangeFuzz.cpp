// A list of frames as typed: frames whose shortest text means the same frames, or wrong use; nothing else may leave. Of
// fewer frames than a job may have: a million of them take a second under the sanitizers and teach nothing more.

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>

#include "Clip/FrameRange.h"
#include "Report/Failure.h"
#include "Support/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    constexpr std::size_t most = 1000;
    try {
        const Tools::FrameRange range = Tools::FrameRange::parse(text, most);
        const auto& frames = range.frames();
        REQUIRE(!frames.empty() && frames.size() <= most);
        REQUIRE(std::unordered_set(frames.begin(), frames.end()).size() == frames.size());
        REQUIRE(Tools::FrameRange::parse(range.string(), most).frames() == frames);
    } catch (const Tools::Failure& failure) {
        REQUIRE(failure.kind() == Tools::Failure::Kind::WrongUse);
    }
    return 0;
}
