#pragma once

#include <cstdint>

namespace RecordingFormatDatabase {

/// The part of a camera's sensor that a clip was recorded from, with the clip's resolution. All zeros: unknown.
struct RecordingFormat {
    float imageAreaWidth = 0.0f;            ///< mm
    float imageAreaHeight = 0.0f;           ///< mm
    std::uint32_t clipResolutionWidth = 0;  ///< px
    std::uint32_t clipResolutionHeight = 0; ///< px
    float imageRadius = 0.0f;               ///< mm; half the diagonal of the image area
};

} // namespace RecordingFormatDatabase
