#include "Image/Exr/ZipBlock.h"

#include <libdeflate.h>

#include <new>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace HostImage {

namespace {

/// predicted[i] = bytes[i * 2] - the one before + 128, for i from `i` on; `previous` is the byte before the first one.
void predictEverySecond(const std::uint8_t* bytes, std::uint8_t* predicted, std::size_t i, std::size_t n,
                        unsigned previous) {
    for (; i < n; ++i) {
        const unsigned current = bytes[i * 2];
        predicted[i] = static_cast<std::uint8_t>(current - previous + 128u);
        previous = current;
    }
}

#if defined(__SSE2__)
__m128i load(const std::uint8_t* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
void store(std::uint8_t* to, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value); }

/// value - (value shifted by one byte, `before`'s last byte coming in) + 128, byte by byte.
__m128i differences(__m128i value, __m128i before) {
    const __m128i shifted = _mm_or_si128(_mm_slli_si128(value, 1), _mm_srli_si128(before, 15));
    return _mm_add_epi8(_mm_sub_epi8(value, shifted), _mm_set1_epi8(-128));
}

__m128i broadcastLastByte(__m128i value) {
    __m128i last = _mm_unpackhi_epi8(value, value);
    last = _mm_shufflehi_epi16(last, 0xff);
    return _mm_shuffle_epi32(last, 0xff);
}
#endif

} // namespace

void splitAndPredict(const std::uint8_t* bytes, std::uint8_t* split, std::size_t n) {
    if (n == 0) return;
    const std::size_t evens = (n + 1) / 2;
    const std::size_t odds = n / 2;
    std::uint8_t* const oddSplit = split + evens;
    const unsigned lastEven = bytes[(evens - 1) * 2];
    std::size_t i = 0;
#if defined(__SSE2__)
    const __m128i lowBytes = _mm_set1_epi16(0x00ff);
    // The first byte is stored as it is, which is the difference to 128, plus 128.
    __m128i evenBefore = _mm_set1_epi8(-128);
    __m128i oddBefore = _mm_set1_epi8(static_cast<char>(lastEven));
    for (; i + 16 <= odds; i += 16) {
        const __m128i a = load(bytes + i * 2);
        const __m128i b = load(bytes + i * 2 + 16);
        const __m128i even = _mm_packus_epi16(_mm_and_si128(a, lowBytes), _mm_and_si128(b, lowBytes));
        const __m128i odd = _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8));
        store(split + i, differences(even, evenBefore));
        store(oddSplit + i, differences(odd, oddBefore));
        evenBefore = even;
        oddBefore = odd;
    }
#endif
    predictEverySecond(bytes, split, i, evens, i == 0 ? 128u : bytes[i * 2 - 2]);
    predictEverySecond(bytes + 1, oddSplit, i, odds, i == 0 ? lastEven : bytes[i * 2 - 1]);
}

void reconstructAndMerge(std::uint8_t* split, std::uint8_t* bytes, std::size_t n) {
    std::size_t i = 0;
    unsigned sum = 128;
#if defined(__SSE2__)
    // A running sum within 16 bytes by doubling the distance, then the sum of all before on top.
    const __m128i offset = _mm_set1_epi8(-128);
    __m128i carry = offset;
    for (; i + 16 <= n; i += 16) {
        __m128i value = _mm_add_epi8(load(split + i), offset);
        value = _mm_add_epi8(value, _mm_slli_si128(value, 1));
        value = _mm_add_epi8(value, _mm_slli_si128(value, 2));
        value = _mm_add_epi8(value, _mm_slli_si128(value, 4));
        value = _mm_add_epi8(value, _mm_slli_si128(value, 8));
        value = _mm_add_epi8(value, carry);
        store(split + i, value);
        carry = broadcastLastByte(value);
    }
    if (i > 0) sum = split[i - 1];
#endif
    for (; i < n; ++i) {
        sum = (sum + split[i] + 128u) & 0xffu;
        split[i] = static_cast<std::uint8_t>(sum);
    }

    const std::uint8_t* const odd = split + (n + 1) / 2;
    i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= n / 2; i += 16) {
        const __m128i low = load(split + i);
        const __m128i high = load(odd + i);
        store(bytes + i * 2, _mm_unpacklo_epi8(low, high));
        store(bytes + i * 2 + 16, _mm_unpackhi_epi8(low, high));
    }
#endif
    for (; i < n / 2; ++i) {
        bytes[i * 2] = split[i];
        bytes[i * 2 + 1] = odd[i];
    }
    if (n % 2 != 0) bytes[n - 1] = split[n / 2];
}

ZipBlockCompressor::ZipBlockCompressor(int level) : m_compressor(libdeflate_alloc_compressor(level)) {
    if (m_compressor == nullptr) throw std::bad_alloc();
}

ZipBlockCompressor::~ZipBlockCompressor() { libdeflate_free_compressor(m_compressor); }

std::size_t ZipBlockCompressor::compress(const std::uint8_t* bytes, std::size_t n, std::uint8_t* compressed) {
    if (n == 0) return 0;
    m_split.resize(n);
    splitAndPredict(bytes, m_split.data(), n);
    // One byte less than n: a block that is not smaller is stored as it is, and readers know it by its size.
    return libdeflate_zlib_compress(m_compressor, m_split.data(), n, compressed, n - 1);
}

ZipBlockDecompressor::ZipBlockDecompressor() : m_decompressor(libdeflate_alloc_decompressor()) {
    if (m_decompressor == nullptr) throw std::bad_alloc();
}

ZipBlockDecompressor::~ZipBlockDecompressor() { libdeflate_free_decompressor(m_decompressor); }

bool ZipBlockDecompressor::decompress(const std::uint8_t* compressed, std::size_t compressedSize, std::uint8_t* bytes,
                                      std::size_t n) {
    m_split.resize(n);
    // Without a place for the actual size, libdeflate insists on exactly n bytes.
    if (libdeflate_zlib_decompress(m_decompressor, compressed, compressedSize, m_split.data(), n, nullptr) !=
        LIBDEFLATE_SUCCESS)
        return false;
    reconstructAndMerge(m_split.data(), bytes, n);
    return true;
}

} // namespace HostImage
