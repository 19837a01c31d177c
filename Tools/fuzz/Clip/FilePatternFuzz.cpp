// A path with a place for the frame number: names that lead back to their number, or wrong use.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "Clip/FilePattern.h"
#include "Report/Failure.h"
#include "Support/Require.h"

namespace {

void use(const std::string& path, Tools::FilePattern::Use use) {
    try {
        const Tools::FilePattern pattern = Tools::FilePattern::parse(path, use);
        if (!pattern.hasFrameNumber()) {
            REQUIRE(pattern.path(7) == path);
            return;
        }
        for (const std::int32_t frame :
             {0, 7, -7, 1001, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
            const std::string file = pattern.path(frame);
            REQUIRE(pattern.frameNumber(file.substr(file.find_last_of('/') + 1)) == frame);
        }
        REQUIRE(Tools::FilePattern::parse(pattern.string(), use).path(7) == pattern.path(7));
    } catch (const Tools::Failure& failure) {
        REQUIRE(failure.kind() == Tools::Failure::Kind::WrongUse);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path(reinterpret_cast<const char*>(data), size);
    use(path, Tools::FilePattern::Use::Input);
    use(path, Tools::FilePattern::Use::Output);
    return 0;
}
