#include "HalfConversion.h"

#include <bit>

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace Image {

namespace {

float halfToFloatScalar(std::uint16_t half) {
    const std::uint32_t sign = (half & 0x8000u) << 16;
    const std::uint32_t exponent = (half >> 10) & 0x1fu;
    const std::uint32_t mantissa = half & 0x3ffu;
    if (exponent == 0x1f) {
        // The instruction quiets a NaN; so does this.
        return std::bit_cast<float>(sign | 0x7f800000u | (mantissa << 13) | (mantissa != 0 ? 0x400000u : 0u));
    }
    if (exponent != 0) return std::bit_cast<float>(sign | ((exponent + 112) << 23) | (mantissa << 13));
    const float magnitude = static_cast<float>(mantissa) * 0x1p-24f;
    return std::bit_cast<float>(sign | std::bit_cast<std::uint32_t>(magnitude));
}

std::uint16_t floatToHalfScalar(float value) {
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t sign = (bits >> 16) & 0x8000u;
    std::uint32_t magnitude = bits & 0x7fffffffu;
    if (magnitude > 0x7f800000u) return static_cast<std::uint16_t>(sign | 0x7e00u | ((magnitude >> 13) & 0x3ffu));
    if (magnitude >= 0x477ff000u) return static_cast<std::uint16_t>(sign | 0x7c00u);
    if (magnitude < 0x38800000u) {
        // Below the smallest normal half: adding 0.5 lets the float unit shift and round to nearest even.
        const float shifted = std::bit_cast<float>(magnitude) + 0.5f;
        return static_cast<std::uint16_t>(sign | (std::bit_cast<std::uint32_t>(shifted) - 0x3f000000u));
    }
    magnitude += 0xfffu + ((magnitude >> 13) & 1u);
    return static_cast<std::uint16_t>(sign | ((magnitude - 0x38000000u) >> 13));
}

#if defined(__x86_64__)
bool processorHasHalf() {
    // Clang 14 has no name for the half instructions here; whether the system keeps the wide registers goes with "avx".
    static const bool has = [] {
        unsigned int a = 0, b = 0, c = 0, d = 0;
        return __builtin_cpu_supports("avx") != 0 && __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_F16C) != 0;
    }();
    return has;
}

__attribute__((target("avx,f16c"))) std::size_t halfToFloatVector(const std::uint16_t* halfs, float* floats,
                                                                  std::size_t n) {
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i packed = _mm_loadu_si128(reinterpret_cast<const __m128i*>(halfs + i));
        _mm256_storeu_ps(floats + i, _mm256_cvtph_ps(packed));
    }
    return i;
}

/// `floats` is 16-byte aligned.
__attribute__((target("avx,f16c"))) std::size_t halfToDistantFloatVector(const std::uint16_t* halfs, float* floats,
                                                                         std::size_t n) {
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m256 eight = _mm256_cvtph_ps(_mm_loadu_si128(reinterpret_cast<const __m128i*>(halfs + i)));
        _mm_stream_ps(floats + i, _mm256_castps256_ps128(eight));
        _mm_stream_ps(floats + i + 4, _mm256_extractf128_ps(eight, 1));
    }
    _mm_sfence(); // such stores are not ordered with the locks by which other threads learn of them
    return i;
}

__attribute__((target("avx,f16c"))) std::size_t floatToHalfVector(const float* floats, std::uint16_t* halfs,
                                                                  std::size_t n) {
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i packed = _mm256_cvtps_ph(_mm256_loadu_ps(floats + i), _MM_FROUND_TO_NEAREST_INT);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(halfs + i), packed);
    }
    return i;
}
#endif

} // namespace

void halfToFloat(const std::uint16_t* halfs, float* floats, std::size_t n) {
    std::size_t i = 0;
#if defined(__x86_64__)
    if (processorHasHalf()) i = halfToFloatVector(halfs, floats, n);
#endif
    for (; i < n; ++i) floats[i] = halfToFloatScalar(halfs[i]);
}

void halfToDistantFloat(const std::uint16_t* halfs, float* floats, std::size_t n) {
    std::size_t i = 0;
#if defined(__x86_64__)
    const bool isAligned = reinterpret_cast<std::uintptr_t>(floats) % 16 == 0;
    if (isAligned && processorHasHalf()) i = halfToDistantFloatVector(halfs, floats, n);
#endif
    halfToFloat(halfs + i, floats + i, n - i);
}

void floatToHalf(const float* floats, std::uint16_t* halfs, std::size_t n) {
    std::size_t i = 0;
#if defined(__x86_64__)
    if (processorHasHalf()) i = floatToHalfVector(floats, halfs, n);
#endif
    for (; i < n; ++i) halfs[i] = floatToHalfScalar(floats[i]);
}

} // namespace Image
