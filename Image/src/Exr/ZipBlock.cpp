#include "Exr/ZipBlock.h"

#include <libdeflate.h>

#include <new>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Image {

namespace {

#if defined(__SSE2__)
__m128i load(const std::uint8_t* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
void store(std::uint8_t* to, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value); }
__m128i broadcast(std::uint8_t value) { return _mm_set1_epi8(static_cast<char>(value)); }

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

/// The reverse of `differences`; `before` holds the byte before in all places, and then the last of these.
__m128i runningSums(__m128i differences, __m128i& before) {
    // Within 16 bytes by doubling the distance; only one addition waits for the bytes before.
    __m128i sums = _mm_add_epi8(differences, _mm_set1_epi8(-128));
    sums = _mm_add_epi8(sums, _mm_slli_si128(sums, 1));
    sums = _mm_add_epi8(sums, _mm_slli_si128(sums, 2));
    sums = _mm_add_epi8(sums, _mm_slli_si128(sums, 4));
    sums = _mm_add_epi8(sums, _mm_slli_si128(sums, 8));
    const __m128i last = broadcastLastByte(sums);
    sums = _mm_add_epi8(sums, before);
    before = _mm_add_epi8(before, last);
    return sums;
}
#endif

std::uint8_t difference(std::uint8_t byte, std::uint8_t before) {
    return static_cast<std::uint8_t>(byte - before + 128);
}

std::uint8_t sum(std::uint8_t difference, std::uint8_t before) {
    return static_cast<std::uint8_t>(before + difference + 128);
}

} // namespace

// A block's first byte is stored as it is: as its difference to 128.
ByteSplitter::ByteSplitter(std::uint8_t* split, std::size_t n)
    : m_evens(split), m_odds(split + n / 2), m_endOfEvens(m_odds), m_lastEven(128), m_lastOdd(0) {}

void ByteSplitter::add(const std::uint8_t* bytes, std::size_t n) {
    const std::size_t half = n / 2;
    if (half == 0) return;
    std::size_t i = 0;
#if defined(__SSE2__)
    const __m128i lowBytes = _mm_set1_epi16(0x00ff);
    __m128i lastEven = broadcast(m_lastEven);
    __m128i lastOdd = broadcast(m_lastOdd);
    for (; i + 16 <= half; i += 16) {
        const __m128i a = load(bytes + i * 2);
        const __m128i b = load(bytes + i * 2 + 16);
        const __m128i even = _mm_packus_epi16(_mm_and_si128(a, lowBytes), _mm_and_si128(b, lowBytes));
        const __m128i odd = _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8));
        store(m_evens + i, differences(even, lastEven));
        store(m_odds + i, differences(odd, lastOdd));
        lastEven = even;
        lastOdd = odd;
    }
    if (i != 0) {
        m_lastEven = bytes[i * 2 - 2];
        m_lastOdd = bytes[i * 2 - 1];
    }
#endif
    for (; i < half; ++i) {
        m_evens[i] = difference(bytes[i * 2], m_lastEven);
        m_odds[i] = difference(bytes[i * 2 + 1], m_lastOdd);
        m_lastEven = bytes[i * 2];
        m_lastOdd = bytes[i * 2 + 1];
    }
    m_evens += half;
    m_odds += half;
    // The first odd byte comes after the last even one, which is known only now.
    if (m_evens == m_endOfEvens) *m_evens = static_cast<std::uint8_t>(*m_evens - m_lastEven);
}

ByteMerger::ByteMerger(const std::uint8_t* split, std::size_t n)
    : m_evens(split), m_odds(split + n / 2), m_lastEven(128), m_lastOdd(128) {
    for (const std::uint8_t* even = m_evens; even != m_odds; ++even) m_lastOdd = sum(*even, m_lastOdd);
}

void ByteMerger::next(std::uint8_t* bytes, std::size_t n) {
    const std::size_t half = n / 2;
    std::size_t i = 0;
#if defined(__SSE2__)
    __m128i lastEven = broadcast(m_lastEven);
    __m128i lastOdd = broadcast(m_lastOdd);
    for (; i + 16 <= half; i += 16) {
        const __m128i even = runningSums(load(m_evens + i), lastEven);
        const __m128i odd = runningSums(load(m_odds + i), lastOdd);
        store(bytes + i * 2, _mm_unpacklo_epi8(even, odd));
        store(bytes + i * 2 + 16, _mm_unpackhi_epi8(even, odd));
    }
    if (i != 0) {
        m_lastEven = bytes[i * 2 - 2];
        m_lastOdd = bytes[i * 2 - 1];
    }
#endif
    for (; i < half; ++i) {
        bytes[i * 2] = m_lastEven = sum(m_evens[i], m_lastEven);
        bytes[i * 2 + 1] = m_lastOdd = sum(m_odds[i], m_lastOdd);
    }
    m_evens += half;
    m_odds += half;
}

ZipBlockCompressor::ZipBlockCompressor(int level) : m_compressor(libdeflate_alloc_compressor(level)) {
    if (m_compressor == nullptr) throw std::bad_alloc();
}

ZipBlockCompressor::~ZipBlockCompressor() { libdeflate_free_compressor(m_compressor); }

std::size_t ZipBlockCompressor::compress(const std::uint8_t* split, std::size_t n, std::uint8_t* compressed) {
    if (n == 0) return 0;
    // One byte less than n: a block that is not smaller is stored as it is, and readers know it by its size.
    return libdeflate_zlib_compress(m_compressor, split, n, compressed, n - 1);
}

ZipBlockDecompressor::ZipBlockDecompressor() : m_decompressor(libdeflate_alloc_decompressor()) {
    if (m_decompressor == nullptr) throw std::bad_alloc();
}

ZipBlockDecompressor::~ZipBlockDecompressor() { libdeflate_free_decompressor(m_decompressor); }

bool ZipBlockDecompressor::decompress(const std::uint8_t* compressed, std::size_t compressedSize, std::uint8_t* split,
                                      std::size_t n) {
    // Without a place for the actual size, libdeflate insists on exactly n bytes.
    return libdeflate_zlib_decompress(m_decompressor, compressed, compressedSize, split, n, nullptr) ==
           LIBDEFLATE_SUCCESS;
}

} // namespace Image
