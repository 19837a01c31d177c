#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Core/FramePreparation.h"
#include "Info/SearchFindings.h"
#include "Lens/CorrectionFileData.h"
#include "Report/Dimensions.h"

namespace Tools {

/// How the plug-in corrects one frame, or why it cannot.
struct FrameInfo {
    /// The result of undistorting the frame.
    struct Undistortion {
        PixelSize size;               ///< of the data window that the corrected picture gets
        float overscan = 0.0f;        ///< %, by which the half-diagonal grows of a picture that fills the format
        double deviation = 0.0;       ///< px; as FrameGeometry::deviation
        float imageRadius = 0.0f;     ///< mm, of the recorded frame's corner
        float correctedRadius = 0.0f; ///< mm, where that corner ends up
    };

    std::int64_t frame = 0;
    std::string file; ///< the picture; empty: a frame of a correction file
    std::optional<Core::FrameToCorrect> prepared;
    Core::FrameParameters parameters;
    std::optional<Undistortion> undistortion;
    std::string error;   ///< brief text; empty: the frame can be corrected
    std::string details; ///< lines that name the values involved, each ending in a line feed; may be empty
};

/// What is known about a correction file or a clip, for people and for programs.
struct InfoReport {
    std::string clip;                       ///< as found on disk; empty: only a correction file is looked at
    std::optional<CorrectionFileData> file; ///< none: no correction file belongs to the clip
    std::string fileError;                  ///< why there is none, when that is a failure
    std::vector<std::string> searchedFolders;
    std::vector<PassedOverFile> passedOverFiles;              ///< in the searched folders
    RecordingFormatDatabase::RecordingFormat recordingFormat; ///< the one that is used
    Core::RecordingFormatOrigin recordingFormatOrigin;
    bool isFrameRecord = false; ///< the lens data of `recordingFormat` are a frame's own record, not a file's
    std::vector<FrameInfo> frames;

    std::size_t failedCount() const;

    /// Several lines; with a line per frame if wanted.
    std::string text(bool withFrames) const;

    /// By Docs/schemas/info.json.
    nlohmann::ordered_json json(bool withFrames) const;

private:
    /// Whether a frame depends on a correction file.
    bool needsFile() const;
};

} // namespace Tools
