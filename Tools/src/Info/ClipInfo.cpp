#include "Info/ClipInfo.h"

#include <fmt/format.h>

#include <boost/filesystem.hpp>
#include <cstring>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

#include "Chain/CorrectionChain.h"
#include "Chain/RadialSampling.h"
#include "Chain/SearchPath.h"
#include "Clip/Clip.h"
#include "Clip/ClipSurvey.h"
#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "CorrectionFile/Finder/NotFoundException.h"
#include "Exception/Exception.h"
#include "Lens/FrameGeometry.h"
#include "Report/Failure.h"

namespace Tools {

namespace {

// Between the centres of the corner pixels, as the overscan is defined.
double halfDiagonalOfCentres(const DD::Image::Box& box) { return halfDiagonal(box.w() - 1.0, box.h() - 1.0); }

FrameInfo::Undistortion undistortionOf(const FramePlan& plan, const PictureShape& shape,
                                       const Renderer::DistortionParameter& parameter) {
    FrameInfo::Undistortion undistortion;
    undistortion.size = {static_cast<std::uint32_t>(plan.kept.w()), static_cast<std::uint32_t>(plan.kept.h())};
    const double before = halfDiagonalOfCentres(shape.whole());
    const double after = halfDiagonalOfCentres(plan.keptOf(shape.whole(), shape));
    undistortion.overscan = static_cast<float>(100.0 * (after / before - 1.0));
    undistortion.deviation =
        nodeDeviation(plan.distortion.value(),
                      RecordedFrame(shape.format, shape.overscan).millimetresPerPixel(plan.frame.recordingFormat));
    undistortion.imageRadius = parameter.frameImageRadius;
    undistortion.correctedRadius = parameter.imageRadius;
    return undistortion;
}

// Those of both corrections: a frame whose shading cannot be corrected is told about too.
Core::FrameParameters bothParameters(const Core::FramePreparation& preparation, Core::FrameToCorrect frame) {
    frame.wantedShading = Core::ShadingCorrectionParameter();
    return preparation.parameters(frame);
}

// The part of a detailed description behind its first line, which is the brief text.
std::string detailsOf(const Exception& exception) {
    const std::string description = exception.detailedDescription();
    return description.substr(description.find('\n') + 1);
}

/// Lets the core prepare the frame that the preparation's data source stands for now, with the core's own texts when
/// that fails, and plans it for the distortion node (planFrame). Undistorting should be wanted; what it takes to remove
/// the shading is told too.
FrameInfo frameInfo(std::int64_t frame, Core::FramePreparation& preparation, const PictureShape& shape) {
    FrameInfo info;
    info.frame = frame;
    try {
        info.prepared = preparation.retrieveFrameToCorrect();
        info.parameters = bothParameters(preparation, *info.prepared);
        const FramePlan plan = planFrame(shape, Steps::Distortion, preparation);
        info.prepared = plan.frame;
        info.parameters = bothParameters(preparation, plan.frame);
        info.undistortion = undistortionOf(plan, shape, info.parameters.distortion.value());
    } catch (const Exception& exception) {
        info.error = causeFirst(exception.what());
        info.details = detailsOf(exception);
    } catch (const std::exception& exception) {
        info.error = causeFirst(exception.what());
    }
    return info;
}

// The correction file around the clip, or why there is none.
void findCorrectionFile(const InfoOptions& options, const Clip& clip, const std::string& clipPath, InfoReport& report) {
    std::string path;
    try {
        if (options.correctionFile) {
            path = *options.correctionFile;
        } else {
            CorrectionFile::ClipFilePathBasedFinder(clipPath, Core::correctionFileSearchDepth).find(path);
        }
    } catch (const CorrectionFile::NotFoundException& exception) {
        const std::string note = nameNote(clip, clipPath);
        report.fileError =
            note.empty() ? "none found; folders searched:" : "none found. " + note + " Folders searched:";
        report.searchedFolders = exception.searchedDirectoryPaths();
        report.passedOverFiles = passedOverFiles(clipPath, report.searchedFolders);
        return;
    } catch (const boost::filesystem::filesystem_error& error) {
        report.fileError =
            "none found, but " + error.path1().string() + " could not be searched: " + error.code().message();
        return;
    }
    report.file = CorrectionFileData::read(path);
}

// A node's detailed text begins with its brief one.
std::string withoutFirstLine(const std::string& text, const std::string& line) {
    return text.starts_with(line + "\n") ? text.substr(line.size() + 1) : text;
}

FrameInfo infoOf(std::int32_t frame, const InfoOptions& options, const Clip& clip, ClipSurvey& survey,
                 CorrectionChain& chain) {
    FrameInfo info;
    info.frame = frame;
    try {
        const std::string path = clip.path(frame);
        const std::shared_ptr<const Image::Frame> header = survey.header(frame);
        info.error = options.pixelAspectObjection(*header);
        if (!info.error.empty()) return info;
        const Image::Metadata metadata = clip.metadata(frame, *header);
        const ClipFrame image{header.get(), &metadata, clip.shownPath(frame), clip.range()};
        chain.setFrame(frame, image, 0, image);
        std::optional<Failure> nodeError;
        try {
            chain.validate();
        } catch (const Failure& error) {
            nodeError = error;
        }
        info = frameInfo(frame, chain.preparation(), chain.shape());
        info.file = path;
        // What the node shows is the truth; without a device, say, the core would still know everything else.
        if (nodeError && info.error.empty()) {
            info.error = causeFirst(nodeError->what());
            info.details = withoutFirstLine(nodeError->details(), nodeError->what());
        }
    } catch (const std::exception& exception) {
        info.error = exception.what();
    }
    return info;
}

bool copied(const std::string& text, char* buffer, unsigned long capacity) {
    if (text.size() + 1 > capacity) return false;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

/// Answers the core for frames of a correction file that are looked at without their clip: as for a clip of the file's
/// own name and size, without overscan, which is to be undistorted.
class FileFrameSource : public Core::CoreDataSource {
public:
    using RecordingFormat = RecordingFormatDatabase::RecordingFormat;

    /// `manualFormat` takes precedence over what the file implies. `number` is the frame's, as long as the core asks.
    FileFrameSource(std::string correctionFilePath, std::string clipFileName, PixelSize size,
                    std::optional<RecordingFormat> manualFormat, const std::uint32_t& number)
        : m_correctionFilePath(std::move(correctionFilePath)),
          m_clipFileName(std::move(clipFileName)),
          m_size(size),
          m_manualFormat(manualFormat),
          m_number(number) {}

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter&) const override { return false; }
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override {
        parameter = {};
        return true;
    }
    bool frameMetadata(char*, unsigned long) const override { return false; }
    bool correctionFilePath(char* path, unsigned long capacity) const override {
        return copied(m_correctionFilePath, path, capacity);
    }
    bool clipFileName(char* name, unsigned long capacity) const override {
        return copied(m_clipFileName, name, capacity);
    }
    bool clipFilePath(char*, unsigned long) const override { return false; }
    bool frameData(Core::FrameData& frameData) const override {
        frameData = {};
        frameData.frameNumber = m_number;
        frameData.width = m_size.width;
        frameData.height = m_size.height;
        return true;
    }
    bool recordingFormat(RecordingFormat& recordingFormat) const override {
        if (m_manualFormat) recordingFormat = *m_manualFormat;
        return m_manualFormat.has_value();
    }

private:
    const std::string m_correctionFilePath;
    const std::string m_clipFileName;
    const PixelSize m_size;
    const std::optional<RecordingFormat> m_manualFormat;
    const std::uint32_t& m_number;
};

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

InfoReport clipInfo(const InfoOptions& options) {
    const Clip clip(options.path, options.decoding);
    InfoReport report;
    report.clip = clip.files().pattern.string();
    const std::vector<std::int32_t> frames = options.frames ? options.frames->frames() : clip.frameNumbers();
    ClipSurvey survey(clip, {});
    if (!frames.empty()) survey.keep({frames.front()});
    findCorrectionFile(options, clip, searchPath(clip, survey, frames), report);

    ChainSettings undistorting;
    static_cast<LensDataOptions&>(undistorting) = options;
    undistorting.distortion = ChainSettings::Distortion::Undistort;
    CorrectionChain chain(undistorting, 1);
    for (const std::int32_t frame : frames) {
        report.frames.push_back(infoOf(frame, options, clip, survey, chain));
        const FrameInfo& info = report.frames.back();
        if (info.prepared && report.recordingFormatOrigin.kind == Core::RecordingFormatOrigin::Kind::None) {
            report.recordingFormat = info.prepared->recordingFormat;
            report.recordingFormatOrigin = info.prepared->recordingFormatOrigin;
            report.isFrameRecord = std::holds_alternative<Core::FrameMetadata>(info.prepared->source);
        }
    }
    return report;
}

InfoReport fileInfo(const std::string& path, std::optional<RecordingFormatDatabase::RecordingFormat> manualFormat,
                    const std::optional<FrameRange>& range) {
    InfoReport report;
    report.file = CorrectionFileData::read(path);
    report.recordingFormat = manualFormat ? *manualFormat : report.file->recordingFormat;
    report.recordingFormatOrigin = report.file->recordingFormatOrigin;
    if (manualFormat) report.recordingFormatOrigin = {Core::RecordingFormatOrigin::Kind::User, ""};

    PictureShape shape;
    shape.format = {report.recordingFormat.clipResolutionWidth, report.recordingFormat.clipResolutionHeight};
    shape.data = shape.formatBox();
    std::uint32_t frameNumber = 0;
    Core::FramePreparation preparation(std::make_unique<FileFrameSource>(
        path, report.file->content->header.videoFileName, shape.format, manualFormat, frameNumber));
    for (const std::int64_t frame : framesOf(*report.file->content, range)) {
        frameNumber = static_cast<std::uint32_t>(frame);
        report.frames.push_back(frameInfo(frame, preparation, shape));
    }
    return report;
}

} // namespace Tools
