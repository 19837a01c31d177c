#pragma once

#include <cstdint>

#include "RecordingFormatDatabase/RecordingFormat.h"

namespace Core {

/// Whether frames have a recording format's aspect ratio, by the check that the facade makes before it corrects one.
///
/// The format's clip resolution must not be 0.
class AspectRatio {
public:
    explicit AspectRatio(const RecordingFormatDatabase::RecordingFormat& format)
        : m_quotient(static_cast<float>(format.clipResolutionWidth) / static_cast<float>(format.clipResolutionHeight)) {
    }

    /// The height in px of a frame of this width, rounded up; the largest number if no frame is that high.
    std::uint32_t expectedHeight(std::uint32_t width) const;

    /// Whether the height is off by less than 2 px.
    bool isThatOf(std::uint32_t width, std::uint32_t height) const;

private:
    float m_quotient;
};

} // namespace Core
