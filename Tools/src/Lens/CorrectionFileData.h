#pragma once

#include <memory>
#include <string>

#include "Core/ExtendedManagedContainer.h"
#include "CorrectionData/Content.h"
#include "RecordingFormatDatabase/RecordingFormat.h"

namespace Tools {

/// A correction file as the plug-in reads it, with the recording format that its header implies.
struct CorrectionFileData {
    std::string path;
    std::shared_ptr<const CorrectionData::Content> content;   ///< never null
    RecordingFormatDatabase::RecordingFormat recordingFormat; ///< image radius 0: unknown
    Core::RecordingFormatOrigin recordingFormatOrigin;

    /// Reads and parses the file. Throws Failure (WrongUse) that names the file, what is wrong and what to do.
    static CorrectionFileData read(const std::string& path);
};

/// What the core works out about a content that was parsed already; path empty.
CorrectionFileData correctionFileDataOf(std::shared_ptr<CorrectionData::Content> content);

/// Maker and type of the lens, as far as the header names them; empty if it names neither.
std::string lensName(const CorrectionData::Header& header);

/// Maker and model of the camera, likewise.
std::string cameraName(const CorrectionData::Header& header);

/// "32 mm", or "24-80 mm" of a zoom lens.
std::string focalLengthText(const CorrectionData::Header& header);

} // namespace Tools
