#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace CorrectionData {

/// A correction file's header: lens, camera, clip and the user's settings. Field names are the file's keys.
struct Header {
    std::string lensManufacturer;
    std::string lensTypeName;
    std::string lensSerialNumber;
    std::uint16_t lensMinFocalLength = 0; ///< mm
    std::uint16_t lensMaxFocalLength = 0; ///< mm
    std::string cameraManufacturer;
    std::string cameraModel;
    float sensorWidth = 0.0f; ///< mm
    std::string clipName;
    std::string videoFileName; ///< file name of the clip that the file belongs to; never empty once parsed from a file
    std::uint32_t clipDurationFrames = 0;
    std::uint32_t clipWidth = 0;  ///< px
    std::uint32_t clipHeight = 0; ///< px
    float tcFps = 0.0f;           ///< timecode frame rate; 0: unknown
    bool tcDrop = false;
    bool enableLensShadingCorrection = false;
    float shadingGamma = 0.0f;
    bool enableLensDistortionCorrection = false;
    float distortionZoom = 0.0f;
};

/// Whether a correction file with this header belongs to the clip: one of its two names is the clip's file name.
inline bool namesClip(const Header& header, const std::string& clipFileName) {
    return header.videoFileName == clipFileName || header.clipName == clipFileName;
}

/// One frame's measurements: heights, shading and radialDistortion have the same number of entries (6 or 7) when they
/// come from a file; a JSON record may carry unequal counts.
struct Frame {
    std::int32_t frameNumber = 0;        ///< never negative
    std::vector<float> heights;          ///< mm from the image centre, 0…100
    std::vector<float> shading;          ///< % relative illumination, 0…100
    std::vector<float> radialDistortion; ///< ‰, −100…100
    std::string timecode;                ///< HH:MM:SS:FF; empty in a JSON record
};

/// The parsed correction file: its header and its frames in ascending order of frame number.
struct Content {
    Header header;
    std::map<std::uint32_t, Frame> frames;
};

} // namespace CorrectionData
