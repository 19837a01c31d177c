#include "Core/AspectRatio.h"

#include <cmath>
#include <limits>

namespace Core {

std::uint32_t AspectRatio::expectedHeight(std::uint32_t width) const {
    constexpr float limit = 4294967296.0f;
    const float roundedUp = std::ceil(static_cast<float>(width) / m_quotient);
    return roundedUp < limit ? static_cast<std::uint32_t>(roundedUp) : std::numeric_limits<std::uint32_t>::max();
}

bool AspectRatio::isThatOf(std::uint32_t width, std::uint32_t height) const {
    const std::uint32_t expected = expectedHeight(width);
    return (expected > height ? expected - height : height - expected) < 2;
}

} // namespace Core
