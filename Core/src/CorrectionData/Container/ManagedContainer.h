#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "CorrectionData/Container/Container.h"
#include "CorrectionData/Container/ManagedContainerDataSource.h"

namespace CorrectionData {

/// The correction data of one clip, fetched on first use. Constructed from the clip's path, from the clip's name and
/// its correction file's path, or from the JSON text that a frame carries.
///
/// A file's content belongs to the data source and is held weakly: if the data source drops it, the next request
/// fetches it again. A JSON text is parsed once and kept; its record applies to every frame number and timecode.
/// Threads: a JSON container may be used by several; the others by one at a time, since data sources have no lock.
class ManagedContainer : public Container {
public:
    /// No argument may be empty (a programming error otherwise).
    ManagedContainer(const std::string& clipFilePath, std::shared_ptr<ManagedContainerDataSource> dataSource);
    ManagedContainer(const std::string& clipFileName, const std::string& correctionFilePath,
                     std::shared_ptr<ManagedContainerDataSource> dataSource);
    explicit ManagedContainer(const std::string& frameMetadataJSONString);
    ~ManagedContainer() override;

    /// Throws DataNotAvailableException with the brief text of the underlying failure as its reason. Failures of other
    /// kinds (a value in the file that is not a number, a file system error) pass through.
    void headerData(Header& header) override;

    /// The record with the highest stored frame number that is not above the requested one: of the frames 10, 20 and
    /// 30, frame 25 gets 20's and 35 gets 30's. Throws like headerData, and for a number before the first stored one.
    void frameData(unsigned int frameNumber, Frame& frame) override;

    /// Counts the frames from the first stored frame's timecode to the given one, adds them to its number, and looks up
    /// the record by number. Throws like that look-up, likewise for a timecode before the first frame's, and
    /// Timecode::InvalidTimecodeException if the first stored frame's timecode is invalid.
    void frameData(Timecode::Timecode timecode, Frame& frame) override;

    /// The content of the clip's file, from the data source unless it is still alive. The data source's failures pass
    /// through and leave `content` untouched. A programming error for a container made from a JSON text.
    void sharedContent(std::shared_ptr<Content>& content);

    /// Throws this clip's DataNotAvailableException for its header or for a frame. An empty reason adds no text.
    [[noreturn]] void throwException(const std::string& reason) const;
    [[noreturn]] void throwException(const std::string& reason, unsigned int frameNumber) const;
    [[noreturn]] void throwException(const std::string& reason, const Timecode::Timecode& timecode) const;

private:
    const std::pair<Header, Frame>& jsonData();

    const std::string m_clipFilePath;
    const std::string m_clipFileName;
    const std::string m_correctionFilePath;
    const std::string m_frameMetadataJSONString;
    const std::shared_ptr<ManagedContainerDataSource> m_dataSource;
    std::weak_ptr<Content> m_content;
    std::mutex m_jsonMutex;                             ///< ensures that the text is parsed once
    std::optional<std::pair<Header, Frame>> m_jsonData; ///< empty until parsed, then never changed
};

} // namespace CorrectionData
