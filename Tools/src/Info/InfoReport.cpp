#include "Info/InfoReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "Lens/CorrectionFileData.h"

namespace Tools {

namespace {

using Core::RecordingFormatOrigin;
using Core::RecordKey;
using CorrectionData::Header;
using nlohmann::ordered_json;

// Numbers as the shortest text that reads back to the same float: 13.2, not 13.199999809265137.
ordered_json shortest(float value) {
    if (!std::isfinite(value)) return nullptr;
    return std::stod(fmt::format("{}", value));
}

ordered_json shortest(double value) {
    if (!std::isfinite(value)) return nullptr;
    return value;
}

template <typename Parameter>
ordered_json coefficientsA(const Parameter& p) {
    ordered_json list = ordered_json::array();
    for (const float value : {p.a0, p.a1, p.a2, p.a3, p.a4, p.a5, p.a6}) list.push_back(shortest(value));
    return list;
}

ordered_json coefficientsB(const Renderer::DistortionParameter& p) {
    ordered_json list = ordered_json::array();
    for (const float value : {p.b0, p.b1, p.b2, p.b3, p.b4, p.b5, p.b6}) list.push_back(shortest(value));
    return list;
}

const char* word(RecordKey key) {
    switch (key) {
        case RecordKey::FrameNumber:
            return "frameNumber";
        case RecordKey::Timecode:
            return "timecode";
        case RecordKey::OwnRecord:
            return "ownRecord";
    }
    return "";
}

const char* word(RecordingFormatOrigin::Kind kind, bool isFrameRecord) {
    switch (kind) {
        case RecordingFormatOrigin::Kind::None:
            return "none";
        case RecordingFormatOrigin::Kind::User:
            return "manual";
        case RecordingFormatOrigin::Kind::Header:
            return isFrameRecord ? "record" : "header";
        case RecordingFormatOrigin::Kind::Database:
            return "database";
    }
    return "";
}

ordered_json headerJson(const Header& header) {
    return {{"lensManufacturer", header.lensManufacturer},
            {"lensTypeName", header.lensTypeName},
            {"lensSerialNumber", header.lensSerialNumber},
            {"lensMinFocalLength", header.lensMinFocalLength},
            {"lensMaxFocalLength", header.lensMaxFocalLength},
            {"cameraManufacturer", header.cameraManufacturer},
            {"cameraModel", header.cameraModel},
            {"sensorWidth", shortest(header.sensorWidth)},
            {"clipName", header.clipName},
            {"videoFileName", header.videoFileName},
            {"clipDurationFrames", header.clipDurationFrames},
            {"clipWidth", header.clipWidth},
            {"clipHeight", header.clipHeight},
            {"tcFps", shortest(header.tcFps)},
            {"tcDrop", header.tcDrop},
            {"enableLensShadingCorrection", header.enableLensShadingCorrection},
            {"shadingGamma", shortest(header.shadingGamma)},
            {"enableLensDistortionCorrection", header.enableLensDistortionCorrection},
            {"distortionZoom", shortest(header.distortionZoom)}};
}

ordered_json recordsJson(const std::map<std::uint32_t, CorrectionData::Frame>& records) {
    if (records.empty()) return {{"count", 0}, {"first", nullptr}, {"last", nullptr}};
    return {{"count", records.size()},
            {"first", {{"frame", records.begin()->first}, {"timecode", records.begin()->second.timecode}}},
            {"last", {{"frame", records.rbegin()->first}, {"timecode", records.rbegin()->second.timecode}}}};
}

ordered_json frameJson(const FrameInfo& info) {
    ordered_json json = {{"frame", info.frame}, {"ok", info.error.empty()}};
    if (!info.file.empty()) json["file"] = info.file;
    if (info.prepared) {
        const Core::FrameToCorrect& frame = *info.prepared;
        json["record"] = {{"key", word(frame.key)},
                          {"lookedUp", frame.keyText},
                          {"frame", frame.record.frameNumber},
                          {"timecode", frame.record.timecode}};
        json["size"] = {{"width", frame.frameData.width}, {"height", frame.frameData.height}};
        json["inputOverscan"] = shortest(frame.frameData.overscan);
    }
    if (info.parameters.shading) json["shading"] = coefficientsA(*info.parameters.shading);
    if (info.parameters.distortion) {
        json["toRecorded"] = coefficientsA(*info.parameters.distortion);
        json["toCorrected"] = coefficientsB(*info.parameters.distortion);
    }
    if (info.undistortion) {
        const FrameInfo::Undistortion& undistortion = *info.undistortion;
        json["undistortion"] = {{"width", undistortion.size.width},
                                {"height", undistortion.size.height},
                                {"overscan", shortest(undistortion.overscan)},
                                {"imageRadius", shortest(undistortion.imageRadius)},
                                {"correctedRadius", shortest(undistortion.correctedRadius)},
                                {"deviation", shortest(undistortion.deviation)}};
    }
    if (!info.error.empty()) {
        json["error"] = info.error;
        json["details"] = info.details;
    }
    return json;
}

std::string line(const char* name, const std::string& value) { return fmt::format("{:<18}{}\n", name, value); }

std::string sizeText(const PixelSize& size) { return fmt::format("{} x {}", size.width, size.height); }

std::string originText(const RecordingFormatOrigin& origin, bool isFrameRecord) {
    switch (origin.kind) {
        case RecordingFormatOrigin::Kind::None:
            return "unknown";
        case RecordingFormatOrigin::Kind::User:
            return "entered by hand";
        case RecordingFormatOrigin::Kind::Header:
            return isFrameRecord ? "from the frame's own record" : "from the file's header";
        case RecordingFormatOrigin::Kind::Database:
            return fmt::format("from the built-in table, \"{}\"", origin.name);
    }
    return "";
}

std::string orUnknown(const std::string& text) { return text.empty() ? "unknown" : text; }

std::string headerText(const Header& header) {
    return line("Lens", fmt::format("{}, serial number {}, {}", orUnknown(lensName(header)),
                                    orUnknown(header.lensSerialNumber), focalLengthText(header))) +
           line("Camera", orUnknown(cameraName(header))) +
           line("Clip", fmt::format("{} ({}), {} x {} px, {} frames", header.videoFileName, header.clipName,
                                    header.clipWidth, header.clipHeight, header.clipDurationFrames)) +
           line("Timecode rate", header.tcFps > 0.0f ? fmt::format("{}", header.tcFps) : "none");
}

std::string recordsText(const std::map<std::uint32_t, CorrectionData::Frame>& records) {
    if (records.empty()) return line("Records", "none");
    const auto& [first, firstRecord] = *records.begin();
    const auto& [last, lastRecord] = *records.rbegin();
    return line("Records", fmt::format("{}, frames {}-{}, timecodes {} to {}", records.size(), first, last,
                                       firstRecord.timecode, lastRecord.timecode));
}

std::string keyText(const Core::FrameToCorrect& frame) {
    switch (frame.key) {
        case RecordKey::FrameNumber:
            return "number " + frame.keyText;
        case RecordKey::Timecode:
            return frame.keyText;
        case RecordKey::OwnRecord:
            return "its own";
    }
    return "";
}

// The details' lines after the error, indented.
std::string errorText(const FrameInfo& info, const std::string& indent) {
    std::string text = info.error;
    std::string rest = info.details;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        text += "\n" + indent + rest.substr(0, end);
        rest.erase(0, end == std::string::npos ? rest.size() : end + 1);
    }
    return text;
}

std::string frameTable(const std::vector<FrameInfo>& frames) {
    std::string text = fmt::format("\n{:>8}  {:>8}  {:<14}  {:<13}  {:>9}  {:>14}\n", "Frame", "Record", "Found by",
                                   "Output [px]", "Overscan", "Deviation [px]");
    for (const FrameInfo& info : frames) {
        if (!info.error.empty()) {
            text += fmt::format("{:>8}  failed: {}\n", info.frame, errorText(info, "          "));
        } else if (info.prepared && info.undistortion) {
            text += fmt::format("{:>8}  {:>8}  {:<14}  {:<13}  {:>7.2f} %  {:>14.2f}\n", info.frame,
                                info.prepared->record.frameNumber, keyText(*info.prepared),
                                sizeText(info.undistortion->size), info.undistortion->overscan,
                                info.undistortion->deviation);
        }
    }
    return text;
}

} // namespace

std::size_t InfoReport::failedCount() const {
    return static_cast<std::size_t>(
        std::count_if(frames.begin(), frames.end(), [](const FrameInfo& info) { return !info.error.empty(); }));
}

bool InfoReport::needsFile() const {
    return frames.empty() || std::any_of(frames.begin(), frames.end(), [](const FrameInfo& info) {
               return !info.prepared || info.prepared->key != RecordKey::OwnRecord;
           });
}

std::string InfoReport::text(bool withFrames) const {
    std::string text;
    if (!clip.empty()) text += line("Picture files", clip);
    if (file) {
        text += line("Correction file", file->path) + headerText(file->content->header) +
                recordsText(file->content->frames);
    } else if (!needsFile()) {
        text += line("Correction file", "none; the frames carry their own records");
    } else if (!fileError.empty()) {
        text += line("Correction file", fileError);
        for (const std::string& folder : shortListOf(searchedFolders)) text += line("", folder);
        for (const PassedOverFile& other : passedOverFiles) {
            text += line("Rejected", other.path + ": " + other.reason);
        }
    }
    if (recordingFormatOrigin.kind == RecordingFormatOrigin::Kind::None) {
        text += line("Recording format", "unknown; give --image-area and --clip-resolution");
    } else {
        text += line("Recording format",
                     fmt::format("{} x {} mm for {} x {} px, radius {:.3f} mm, {}", recordingFormat.imageAreaWidth,
                                 recordingFormat.imageAreaHeight, recordingFormat.clipResolutionWidth,
                                 recordingFormat.clipResolutionHeight, recordingFormat.imageRadius,
                                 originText(recordingFormatOrigin, isFrameRecord)));
    }
    const auto corrected =
        std::find_if(frames.begin(), frames.end(), [](const FrameInfo& info) { return info.undistortion.has_value(); });
    if (corrected != frames.end()) {
        text += line("Undistorted size",
                     fmt::format("{} px, {:.2f} % overscan (frame {})", sizeText(corrected->undistortion->size),
                                 corrected->undistortion->overscan, corrected->frame));
        if (corrected->undistortion->deviation > 0.05) {
            text +=
                line("Deviation",
                     fmt::format("up to {:.2f} px from the ideal undistorted picture, whose corner is inside the frame",
                                 corrected->undistortion->deviation));
        }
    }
    const auto failed =
        std::find_if(frames.begin(), frames.end(), [](const FrameInfo& info) { return !info.error.empty(); });
    text += line("Frames", fmt::format("{} of {} can be corrected", frames.size() - failedCount(), frames.size()));
    if (failed != frames.end()) {
        text +=
            line("First failure", fmt::format("frame {}: {}", failed->frame, errorText(*failed, std::string(18, ' '))));
    }
    return withFrames ? text + frameTable(frames) : text;
}

ordered_json InfoReport::json(bool withFrames) const {
    ordered_json json = {{"version", 1}};
    if (!clip.empty()) json["clip"] = clip;
    if (file) {
        json["correctionFile"] = file->path;
        json["header"] = headerJson(file->content->header);
        json["records"] = recordsJson(file->content->frames);
    } else {
        json["correctionFile"] = nullptr;
        if (!fileError.empty()) {
            json["correctionFileError"] = fileError;
            json["searchedFolders"] = searchedFolders;
            json["passedOverFiles"] = Tools::json(passedOverFiles);
        }
    }
    json["recordingFormat"] = {{"origin", word(recordingFormatOrigin.kind, isFrameRecord)},
                               {"imageAreaWidth", shortest(recordingFormat.imageAreaWidth)},
                               {"imageAreaHeight", shortest(recordingFormat.imageAreaHeight)},
                               {"clipResolutionWidth", recordingFormat.clipResolutionWidth},
                               {"clipResolutionHeight", recordingFormat.clipResolutionHeight},
                               {"imageRadius", shortest(recordingFormat.imageRadius)}};
    if (recordingFormatOrigin.kind == RecordingFormatOrigin::Kind::Database) {
        json["recordingFormat"]["name"] = recordingFormatOrigin.name;
    }
    json["frameCount"] = frames.size();
    json["failedCount"] = failedCount();
    if (withFrames) {
        ordered_json list = ordered_json::array();
        for (const FrameInfo& info : frames) list.push_back(frameJson(info));
        json["frames"] = std::move(list);
    }
    return json;
}

} // namespace Tools
