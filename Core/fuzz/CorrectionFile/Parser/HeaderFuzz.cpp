// The header of a correction file: parsed, or one of the two documented errors; nothing else may leave.

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cstddef>
#include <cstdint>
#include <string>

#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Parser/Parser.h"
#include "Support/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    CorrectionData::Header header;
    header.clipName = "untouched";
    try {
        CorrectionFile::Parser().parseHeader(text, header);
        REQUIRE(!header.videoFileName.empty());
        return 0;
    } catch (const CorrectionFile::InvalidFormatException&) {
    } catch (const boost::bad_lexical_cast&) {
    }
    REQUIRE(header.clipName == "untouched");
    return 0;
}
