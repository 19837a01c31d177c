#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "CorrectionData/Container/ManagedContainer.h"
#include "RecordingFormatDatabase/RecordingFormat.h"

namespace Core {

/// Where a recording format comes from.
struct RecordingFormatOrigin {
    enum class Kind {
        None,     ///< there is no complete format
        User,     ///< entered by hand
        Header,   ///< sensor width and clip size of the correction data
        Database, ///< the built-in table
    };

    Kind kind = Kind::None;
    std::string name; ///< of the table's format, for Database
};

/// A clip's correction data together with the recording format that they imply.
///
/// The format is worked out once per container. Threads: as the managed container.
class ExtendedManagedContainer : public CorrectionData::ManagedContainer {
public:
    /// As the managed container's constructors.
    ExtendedManagedContainer(const std::string& clipFilePath,
                             std::shared_ptr<CorrectionData::ManagedContainerDataSource> dataSource);
    ExtendedManagedContainer(const std::string& clipFileName, const std::string& correctionFilePath,
                             std::shared_ptr<CorrectionData::ManagedContainerDataSource> dataSource);
    explicit ExtendedManagedContainer(const std::string& frameMetadataJSONString);
    ~ExtendedManagedContainer() override;

    /// The header's own sensor width and clip size if they are complete, the image area taking the clip's aspect ratio
    /// (24 mm and 4096 × 2160 px: 24 × 12.65625 mm, radius about 13.566 mm). Else the only one of the camera's formats
    /// in the recording format database that has the clip's size or the sensor's width. Else the header's own values,
    /// with image area height and radius 0. Throws what headerData throws; a later call tries again then.
    RecordingFormatDatabase::RecordingFormat recordingFormat();

    /// Of that format; throws as it does.
    RecordingFormatOrigin recordingFormatOrigin();

private:
    void computeRecordingFormat(const CorrectionData::Header& header);

    std::once_flag m_recordingFormatOnceFlag;
    RecordingFormatDatabase::RecordingFormat m_recordingFormat;
    RecordingFormatOrigin m_recordingFormatOrigin;
};

} // namespace Core
