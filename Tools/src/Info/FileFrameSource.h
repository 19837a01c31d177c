#pragma once

#include <optional>
#include <string>

#include "Core/CoreDataSource.h"

namespace Tools {

/// Answers the core for frames of a correction file that are looked at without their clip: as for a clip of the file's
/// own name and size, without overscan, which is to be undistorted.
class FileFrameSource : public Core::CoreDataSource {
public:
    using RecordingFormat = RecordingFormatDatabase::RecordingFormat;

    /// `manualFormat` takes precedence over what the file implies; without it, `width` × `height` px is the frame's
    /// size. `frameNumber` is read whenever the core asks, and outlives this object.
    FileFrameSource(std::string correctionFilePath, std::string clipFileName, std::uint32_t width, std::uint32_t height,
                    std::optional<RecordingFormat> manualFormat, const std::uint32_t& frameNumber);

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override;
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override;
    bool frameMetadata(char* metadata, unsigned long capacity) const override;
    bool correctionFilePath(char* path, unsigned long capacity) const override;
    bool clipFileName(char* name, unsigned long capacity) const override;
    bool clipFilePath(char* path, unsigned long capacity) const override;
    bool frameData(Core::FrameData& frameData) const override;
    bool recordingFormat(RecordingFormat& recordingFormat) const override;

private:
    const std::string m_correctionFilePath;
    const std::string m_clipFileName;
    const std::uint32_t m_width;
    const std::uint32_t m_height;
    const std::optional<RecordingFormat> m_manualFormat;
    const std::uint32_t& m_frameNumber;
};

} // namespace Tools
