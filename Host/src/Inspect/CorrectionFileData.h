#pragma once

#include <memory>
#include <string>

#include "CorrectionData/Content.h"
#include "RecordingFormatDatabase/RecordingFormat.h"

namespace Host {

/// A correction file as the plug-in reads it, with the recording format that its header implies.
struct CorrectionFileData {
    std::string path;
    std::shared_ptr<const CorrectionData::Content> content; ///< never null
    RecordingFormatDatabase::RecordingFormat recordingFormat;

    /// Reads and parses the file. Throws Failure (WrongUse) that names the file, what is wrong and what to do.
    static CorrectionFileData read(const std::string& path);
};

/// The recording format that the core works out for a header; image radius 0: unknown.
RecordingFormatDatabase::RecordingFormat recordingFormatOf(std::shared_ptr<const CorrectionData::Content> content);

} // namespace Host
