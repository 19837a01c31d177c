#include "Core/ExtendedManagedContainer.h"

#include <cmath>
#include <map>
#include <utility>

#include "Exception/Assert.h"
#include "Exception/Exception.h"
#include "RecordingFormatDatabase/CsvStringBasedRecordingFormatDatabase.h"

namespace Core {

using RecordingFormatDatabase::RecordingFormat;

ExtendedManagedContainer::ExtendedManagedContainer(
    const std::string& clipFilePath, std::shared_ptr<CorrectionData::ManagedContainerDataSource> dataSource)
    : ManagedContainer(clipFilePath, std::move(dataSource)) {}

ExtendedManagedContainer::ExtendedManagedContainer(
    const std::string& clipFileName, const std::string& correctionFilePath,
    std::shared_ptr<CorrectionData::ManagedContainerDataSource> dataSource)
    : ManagedContainer(clipFileName, correctionFilePath, std::move(dataSource)) {}

ExtendedManagedContainer::ExtendedManagedContainer(const std::string& frameMetadataJSONString)
    : ManagedContainer(frameMetadataJSONString) {}

ExtendedManagedContainer::~ExtendedManagedContainer() = default;

RecordingFormat ExtendedManagedContainer::recordingFormat() {
    CorrectionData::Header header;
    headerData(header);
    std::call_once(m_recordingFormatOnceFlag, [&] { computeRecordingFormat(header); });
    return m_recordingFormat;
}

RecordingFormatOrigin ExtendedManagedContainer::recordingFormatOrigin() {
    recordingFormat();
    return m_recordingFormatOrigin;
}

void ExtendedManagedContainer::computeRecordingFormat(const CorrectionData::Header& header) {
    RecordingFormat format;
    format.imageAreaWidth = header.sensorWidth;
    format.clipResolutionWidth = header.clipWidth;
    format.clipResolutionHeight = header.clipHeight;
    m_recordingFormat = format;

    if (header.clipWidth != 0 && header.clipHeight != 0 && header.sensorWidth > 0.0f) {
        format.imageAreaHeight =
            static_cast<float>(header.clipHeight) / static_cast<float>(header.clipWidth) * header.sensorWidth;
        const double halfWidth = static_cast<double>(header.sensorWidth) * 0.5;
        const double halfHeight = static_cast<double>(format.imageAreaHeight) * 0.5;
        format.imageRadius = static_cast<float>(std::sqrt(halfWidth * halfWidth + halfHeight * halfHeight));
        m_recordingFormat = format;
        m_recordingFormatOrigin.kind = RecordingFormatOrigin::Kind::Header;
        return;
    }
    if (header.cameraManufacturer.empty() || header.cameraModel.empty()) return;

    std::map<std::string, RecordingFormat> formats;
    try {
        RecordingFormatDatabase::CsvStringBasedRecordingFormatDatabase::sharedInstance().recordingFormats(
            header.cameraManufacturer, header.cameraModel, formats);
    } catch (const Exception&) {
        return; // a camera that the table does not know implies no format
    }
    unsigned int candidates = 0;
    std::string candidateName;
    for (const auto& [name, candidate] : formats) {
        const bool isSameResolution =
            candidate.clipResolutionWidth == header.clipWidth && candidate.clipResolutionHeight == header.clipHeight;
        const bool isSameImageAreaWidth =
            candidate.imageAreaWidth <= header.sensorWidth && candidate.imageAreaWidth >= header.sensorWidth;
        // The table's sizes are positive, so a header that matched both would have been complete.
        ORVEX_ASSERT(!(isSameResolution && isSameImageAreaWidth));
        if (!isSameResolution && !isSameImageAreaWidth) continue;
        format = candidate;
        candidateName = name;
        ++candidates;
    }
    if (candidates != 1) return;
    m_recordingFormat = format;
    m_recordingFormatOrigin = {RecordingFormatOrigin::Kind::Database, candidateName};
}

} // namespace Core
