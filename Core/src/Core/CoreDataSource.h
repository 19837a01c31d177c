#pragma once

#include <cstdint>

#include "RecordingFormatDatabase/RecordingFormat.h"

namespace Core {

/// What the core needs to know about the frame that is being corrected.
struct FrameData {
    std::uint32_t frameNumber = 0; ///< counted from 0; with a timecode: frames to add to that timecode
    float frameRate = 0.0f;        ///< the host's frames per second; 0: the same as the correction file's
    char timecode[16] = {};        ///< zero-terminated, at most 15 characters; empty: unknown
    std::uint32_t width = 0;       ///< px, of the frame to be rendered
    std::uint32_t height = 0;      ///< px
    float overscan = 0.0f;         ///< %, how much larger the rendered half-diagonal is than the recorded one
};

struct ShadingCorrectionParameter {
    bool addShading = false; ///< add the lens's shading instead of removing it
    bool renderMap = false;  ///< render a multiply map instead of the corrected image
};

struct DistortionCorrectionParameter {
    bool distort = false;   ///< apply the lens's distortion instead of removing it
    bool renderMap = false; ///< render a displacement map instead of the corrected image
};

/// The one door through which the core asks its host for data about the current clip and frame.
///
/// Every operation answers true when the value is available. The text operations copy the text with its terminating
/// zero into the buffer and answer false, leaving the buffer untouched, when the value is missing or does not fit
/// (length + 1 > capacity). Called from whichever host thread calls the facade; implementations hold no lock for it.
class CoreDataSource {
public:
    virtual ~CoreDataSource() = default;

    /// Whether shading is to be corrected, and how. On false the parameter is untouched.
    virtual bool shouldPerformShadingCorrection(ShadingCorrectionParameter& parameter) const = 0;

    /// Whether distortion is to be corrected, and how. On false the parameter is untouched.
    virtual bool shouldPerformDistortionCorrection(DistortionCorrectionParameter& parameter) const = 0;

    /// The frame's own correction record as JSON text, when the frame carries one.
    virtual bool frameMetadata(char* metadata, unsigned long capacity) const = 0;

    /// Path of the correction file, when the user selected one.
    virtual bool correctionFilePath(char* path, unsigned long capacity) const = 0;

    /// The clip's file name, without folders.
    virtual bool clipFileName(char* name, unsigned long capacity) const = 0;

    /// The clip's full path, from which the correction file is searched.
    virtual bool clipFilePath(char* path, unsigned long capacity) const = 0;

    virtual bool frameData(FrameData& frameData) const = 0;

    /// A recording format typed in by the user; takes precedence over what the correction data imply.
    virtual bool recordingFormat(RecordingFormatDatabase::RecordingFormat& recordingFormat) const = 0;
};

} // namespace Core
