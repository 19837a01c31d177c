#include "Exr/SampleRows.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Image {

namespace {

// Sample rows of a file's block need not be aligned: memcpy of a fixed size is one unaligned move.
template <std::size_t Size>
void spread(const std::uint8_t* channel, std::uint8_t* pixels, std::size_t stride, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) std::memcpy(pixels + i * stride, channel + i * Size, Size);
}

template <std::size_t Size>
void gather(const std::uint8_t* pixels, std::size_t stride, std::uint8_t* channel, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) std::memcpy(channel + i * Size, pixels + i * stride, Size);
}

#if defined(__SSE2__)
__m128i load(const std::uint8_t* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
void store(std::uint8_t* to, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value); }

/// Four channels of 16 bits, eight pixels at a time; returns how many were done.
std::size_t interleaveFourWords(const std::uint8_t* const* channels, std::uint8_t* pixels, std::size_t n) {
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i r = load(channels[0] + i * 2);
        const __m128i g = load(channels[1] + i * 2);
        const __m128i b = load(channels[2] + i * 2);
        const __m128i a = load(channels[3] + i * 2);
        const __m128i rgLow = _mm_unpacklo_epi16(r, g);
        const __m128i rgHigh = _mm_unpackhi_epi16(r, g);
        const __m128i baLow = _mm_unpacklo_epi16(b, a);
        const __m128i baHigh = _mm_unpackhi_epi16(b, a);
        store(pixels + i * 8, _mm_unpacklo_epi32(rgLow, baLow));
        store(pixels + i * 8 + 16, _mm_unpackhi_epi32(rgLow, baLow));
        store(pixels + i * 8 + 32, _mm_unpacklo_epi32(rgHigh, baHigh));
        store(pixels + i * 8 + 48, _mm_unpackhi_epi32(rgHigh, baHigh));
    }
    return i;
}

std::size_t deinterleaveFourWords(const std::uint8_t* pixels, std::uint8_t* const* channels, std::size_t n) {
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        // Pixels 0 1, 2 3, 4 5, 6 7; three rounds of unpacking sort 64 values of 16 bits by channel.
        const __m128i p01 = load(pixels + i * 8);
        const __m128i p23 = load(pixels + i * 8 + 16);
        const __m128i p45 = load(pixels + i * 8 + 32);
        const __m128i p67 = load(pixels + i * 8 + 48);
        const __m128i a02 = _mm_unpacklo_epi16(p01, p23);
        const __m128i a13 = _mm_unpackhi_epi16(p01, p23);
        const __m128i a46 = _mm_unpacklo_epi16(p45, p67);
        const __m128i a57 = _mm_unpackhi_epi16(p45, p67);
        const __m128i rg0123 = _mm_unpacklo_epi16(a02, a13);
        const __m128i ba0123 = _mm_unpackhi_epi16(a02, a13);
        const __m128i rg4567 = _mm_unpacklo_epi16(a46, a57);
        const __m128i ba4567 = _mm_unpackhi_epi16(a46, a57);
        store(channels[0] + i * 2, _mm_unpacklo_epi64(rg0123, rg4567));
        store(channels[1] + i * 2, _mm_unpackhi_epi64(rg0123, rg4567));
        store(channels[2] + i * 2, _mm_unpacklo_epi64(ba0123, ba4567));
        store(channels[3] + i * 2, _mm_unpackhi_epi64(ba0123, ba4567));
    }
    return i;
}
#endif

} // namespace

void interleaveRow(const std::uint8_t* const* channels, std::size_t components, std::size_t bytesPerSample,
                   std::uint8_t* pixels, std::size_t n) {
    if (components == 1) {
        std::memcpy(pixels, channels[0], n * bytesPerSample);
        return;
    }
    std::size_t done = 0;
#if defined(__SSE2__)
    if (components == 4 && bytesPerSample == 2) done = interleaveFourWords(channels, pixels, n);
#endif
    const std::size_t stride = components * bytesPerSample;
    for (std::size_t c = 0; c < components; ++c) {
        const std::uint8_t* const from = channels[c] + done * bytesPerSample;
        std::uint8_t* const to = pixels + done * stride + c * bytesPerSample;
        if (bytesPerSample == 2)
            spread<2>(from, to, stride, n - done);
        else
            spread<4>(from, to, stride, n - done);
    }
}

void deinterleaveRow(const std::uint8_t* pixels, std::size_t components, std::size_t bytesPerSample,
                     std::uint8_t* const* channels, std::size_t n) {
    if (components == 1) {
        std::memcpy(channels[0], pixels, n * bytesPerSample);
        return;
    }
    std::size_t done = 0;
#if defined(__SSE2__)
    if (components == 4 && bytesPerSample == 2) done = deinterleaveFourWords(pixels, channels, n);
#endif
    const std::size_t stride = components * bytesPerSample;
    for (std::size_t c = 0; c < components; ++c) {
        const std::uint8_t* const from = pixels + done * stride + c * bytesPerSample;
        std::uint8_t* const to = channels[c] + done * bytesPerSample;
        if (bytesPerSample == 2)
            gather<2>(from, stride, to, n - done);
        else
            gather<4>(from, stride, to, n - done);
    }
}

} // namespace Image
