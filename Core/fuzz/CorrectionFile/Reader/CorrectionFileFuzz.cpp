// A whole correction file from disk to polynomials: read, parsed, its recording format worked out, its frames fitted.

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "Core/ExtendedManagedContainer.h"
#include "CorrectionData/Container/ManagedContainerDataSource.h"
#include "CorrectionData/ContainerManager/ContainerManager.h"
#include "CorrectionData/ContainerManager/CorrectionFileBasedContainerManagerDataSource.h"
#include "CorrectionFile/Parser/Parser.h"
#include "CorrectionFile/Reader/Reader.h"
#include "Exception/Exception.h"
#include "Support/Fit.h"
#include "Support/Require.h"
#include "Support/TemporaryFolder.h"

namespace {

/// By clip file name and correction file, as when a user has selected the file.
void useAsSelectedFile(const std::string& path, const CorrectionData::Content& content) {
    const auto manager = std::make_shared<CorrectionData::ContainerManager>(
        std::make_unique<CorrectionData::CorrectionFileBasedContainerManagerDataSource>(
            CorrectionFile::LevelOfDepth{0, 0, 0}),
        1);
    Core::ExtendedManagedContainer container(content.header.videoFileName, path, manager);
    try {
        container.recordingFormat();
        CorrectionData::Frame frame;
        container.frameData(0, frame);
        container.frameData(Timecode::Timecode("01:00:00:00", content.header.tcFps), frame);
    } catch (const Exception&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Support::TemporaryFolder folder;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string path = folder.write("A.olcf", bytes);
    std::string text;
    CorrectionFile::Reader().readFile(path, text);
    REQUIRE(text == bytes);
    CorrectionData::Content content;
    try {
        CorrectionFile::Parser().parse(text, content);
    } catch (const Exception&) {
        return 0;
    } catch (const boost::bad_lexical_cast&) {
        return 0;
    }
    int fits = 0;
    for (const auto& [number, frame] : content.frames) {
        if (++fits > 4) break; // enough to meet any one frame, and long bodies stay quick
        Support::fit(frame);
    }
    useAsSelectedFile(path, content);
    return 0;
}
