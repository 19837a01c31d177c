#include "Info/ClipInfo.h"

#include <boost/filesystem.hpp>
#include <exception>
#include <memory>
#include <vector>

#include "Chain/CorrectionChain.h"
#include "Chain/SearchPath.h"
#include "Clip/Clip.h"
#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "CorrectionFile/Finder/NotFoundException.h"
#include "Report/Failure.h"

namespace Tools {

namespace {

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

std::vector<std::int32_t> framesOf(const InfoOptions& options, const Clip& clip) {
    if (options.frames) return options.frames->frames();
    std::vector<std::int32_t> frames;
    for (const auto& [frame, path] : clip.frames()) frames.push_back(frame);
    return frames;
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

} // namespace

InfoReport clipInfo(const InfoOptions& options) {
    const Clip clip(options.path, options.decoding);
    InfoReport report;
    report.clip = clip.files().pattern.string();
    const std::vector<std::int32_t> frames = framesOf(options, clip);
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

} // namespace Tools
