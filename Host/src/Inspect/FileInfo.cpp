#include "Inspect/FileInfo.h"

#include <memory>
#include <utility>

#include "Inspect/FileFrameSource.h"

namespace Host {

InfoReport fileInfo(const std::string& path, std::optional<RecordingFormatDatabase::RecordingFormat> manualFormat) {
    InfoReport report;
    report.file = CorrectionFileData::read(path);
    report.recordingFormat = manualFormat ? *manualFormat : report.file->recordingFormat;
    report.recordingFormatOrigin = report.file->recordingFormatOrigin;
    if (manualFormat) report.recordingFormatOrigin = {Core::RecordingFormatOrigin::Kind::User, ""};

    std::uint32_t frameNumber = 0;
    Core::FramePreparation preparation(std::make_unique<FileFrameSource>(
        path, report.file->content->header.videoFileName, report.recordingFormat.clipResolutionWidth,
        report.recordingFormat.clipResolutionHeight, manualFormat, frameNumber));
    for (const auto& [number, frame] : report.file->content->frames) {
        frameNumber = number;
        report.frames.push_back(frameInfo(number, preparation));
    }
    return report;
}

} // namespace Host
