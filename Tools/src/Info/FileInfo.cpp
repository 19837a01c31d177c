#include "Info/FileInfo.h"

#include <fmt/format.h>

#include <memory>
#include <utility>
#include <vector>

#include "Info/FileFrameSource.h"
#include "Report/Failure.h"

namespace Tools {
namespace {

std::vector<std::int64_t> framesOf(const CorrectionData::Content& content, const std::optional<FrameRange>& range) {
    std::vector<std::int64_t> frames;
    if (!range) {
        for (const auto& [number, frame] : content.frames) frames.push_back(number);
        return frames;
    }
    for (const std::int32_t frame : range->frames()) {
        if (frame < 0) {
            refuse(fmt::format("Frame {} is negative; the frames of a correction file count from 0.", frame));
        }
        frames.push_back(frame);
    }
    return frames;
}

} // namespace

InfoReport fileInfo(const std::string& path, std::optional<RecordingFormatDatabase::RecordingFormat> manualFormat,
                    const std::optional<FrameRange>& range) {
    InfoReport report;
    report.file = CorrectionFileData::read(path);
    report.recordingFormat = manualFormat ? *manualFormat : report.file->recordingFormat;
    report.recordingFormatOrigin = report.file->recordingFormatOrigin;
    if (manualFormat) report.recordingFormatOrigin = {Core::RecordingFormatOrigin::Kind::User, ""};

    std::uint32_t frameNumber = 0;
    Core::FramePreparation preparation(std::make_unique<FileFrameSource>(
        path, report.file->content->header.videoFileName, report.recordingFormat.clipResolutionWidth,
        report.recordingFormat.clipResolutionHeight, manualFormat, frameNumber));
    PictureShape shape;
    shape.format = {report.recordingFormat.clipResolutionWidth, report.recordingFormat.clipResolutionHeight};
    shape.data = shape.formatBox();
    for (const std::int64_t frame : framesOf(*report.file->content, range)) {
        frameNumber = static_cast<std::uint32_t>(frame);
        report.frames.push_back(frameInfo(frame, preparation, shape));
    }
    return report;
}

} // namespace Tools
