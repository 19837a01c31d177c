#include "CorrectionData/Container/ManagedContainer.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

#include "CorrectionData/Container/DataNotAvailableException.h"
#include "CorrectionData/Parser/JsonParser.h"
#include "Exception/Assert.h"

namespace CorrectionData {

ManagedContainer::ManagedContainer(const std::string& clipFilePath,
                                   std::shared_ptr<ManagedContainerDataSource> dataSource)
    : m_clipFilePath(clipFilePath), m_dataSource(dataSource) {
    ORVEX_ASSERT(dataSource);
    ORVEX_ASSERT(clipFilePath.length());
}

ManagedContainer::ManagedContainer(const std::string& clipFileName, const std::string& correctionFilePath,
                                   std::shared_ptr<ManagedContainerDataSource> dataSource)
    : m_clipFileName(clipFileName), m_correctionFilePath(correctionFilePath), m_dataSource(dataSource) {
    ORVEX_ASSERT(dataSource);
    ORVEX_ASSERT(clipFileName.length());
    ORVEX_ASSERT(correctionFilePath.length());
}

ManagedContainer::ManagedContainer(const std::string& frameMetadataJSONString)
    : m_frameMetadataJSONString(frameMetadataJSONString) {
    ORVEX_ASSERT(frameMetadataJSONString.length());
}

ManagedContainer::~ManagedContainer() = default;

// Outputs are copied first and moved then, so that they stay whole when memory runs out.
void ManagedContainer::headerData(Header& header) {
    if (!m_frameMetadataJSONString.empty()) {
        header = Header(jsonData().first);
        return;
    }
    std::shared_ptr<Content> content;
    try {
        sharedContent(content);
    } catch (const Exception& exception) {
        throwException(exception.what());
    }
    header = Header(content->header);
}

void ManagedContainer::frameData(unsigned int frameNumber, Frame& frame) {
    if (!m_frameMetadataJSONString.empty()) {
        frame = Frame(jsonData().second);
        return;
    }
    std::shared_ptr<Content> content;
    try {
        sharedContent(content);
    } catch (const Exception& exception) {
        throwException(exception.what(), frameNumber);
    }
    const auto next = content->frames.upper_bound(frameNumber);
    if (next == content->frames.begin()) throwException("", frameNumber);
    frame = Frame(std::prev(next)->second);
}

void ManagedContainer::frameData(Timecode::Timecode timecode, Frame& frame) {
    if (!m_frameMetadataJSONString.empty()) {
        frame = Frame(jsonData().second);
        return;
    }
    std::shared_ptr<Content> content;
    try {
        sharedContent(content);
    } catch (const Exception& exception) {
        throwException(exception.what(), timecode);
    }
    if (content->frames.empty()) throwException("", timecode);

    const auto& [firstNumber, firstFrame] = *content->frames.begin();
    const Timecode::Timecode firstTimecode(firstFrame.timecode.c_str(), content->header.tcFps);
    std::uint64_t frameNumber = firstNumber;
    try {
        frameNumber += timecode - firstTimecode;
    } catch (const Exception& exception) {
        throwException(exception.what(), timecode);
    }
    // A sum beyond 32 bits must not wrap to an early frame; it lies behind the last one.
    const std::uint64_t lastNumber = std::numeric_limits<unsigned int>::max();
    frameData(static_cast<unsigned int>(std::min(frameNumber, lastNumber)), frame);
}

void ManagedContainer::sharedContent(std::shared_ptr<Content>& content) {
    ORVEX_ASSERT(m_dataSource);
    std::shared_ptr<Content> shared = m_content.lock();
    if (!shared) {
        if (!m_clipFilePath.empty()) {
            m_dataSource->shareContent(m_clipFilePath, shared);
        } else {
            m_dataSource->shareContent(m_clipFileName, m_correctionFilePath, shared);
        }
        m_content = shared;
    }
    content = std::move(shared);
}

const std::pair<Header, Frame>& ManagedContainer::jsonData() {
    // A once flag would do but for ThreadSanitizer, under which a flag whose function threw is never released: the next
    // call waits for ever.
    const std::lock_guard<std::mutex> lock(m_jsonMutex);
    if (!m_jsonData) {
        std::pair<Header, Frame> data;
        try {
            JsonParser::parse(m_frameMetadataJSONString, data.first, data.second);
        } catch (const Exception&) {
            throw DataNotAvailableException(m_frameMetadataJSONString);
        }
        m_jsonData = std::move(data);
    }
    return *m_jsonData;
}

void ManagedContainer::throwException(const std::string& reason) const {
    if (!m_clipFilePath.empty()) throw DataNotAvailableException(m_clipFilePath, reason);
    throw DataNotAvailableException(m_clipFileName, m_correctionFilePath, reason);
}

void ManagedContainer::throwException(const std::string& reason, unsigned int frameNumber) const {
    if (!m_clipFilePath.empty()) throw DataNotAvailableException(m_clipFilePath, frameNumber, reason);
    throw DataNotAvailableException(m_clipFileName, m_correctionFilePath, frameNumber, reason);
}

void ManagedContainer::throwException(const std::string& reason, const Timecode::Timecode& timecode) const {
    if (!m_clipFilePath.empty()) throw DataNotAvailableException(m_clipFilePath, timecode, reason);
    throw DataNotAvailableException(m_clipFileName, m_correctionFilePath, timecode, reason);
}

} // namespace CorrectionData
