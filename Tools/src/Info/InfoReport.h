#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Info/FrameInfo.h"
#include "Info/PassedOverFiles.h"
#include "Lens/CorrectionFileData.h"

namespace Tools {

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
