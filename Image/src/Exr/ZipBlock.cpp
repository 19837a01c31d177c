#include "Exr/ZipBlock.h"

#include <libdeflate.h>

#if ORVEX_ISAL
#include <isa-l/igzip_lib.h>
#endif

#include <cstring>
#include <new>
#include <vector>

#include "FrameWriter.h"

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

/// Of n bytes, modulo 256.
std::uint8_t sumOf(const std::uint8_t* bytes, std::size_t n) {
    std::size_t i = 0;
    std::uint64_t sum = 0;
#if defined(__SSE2__)
    __m128i sums = _mm_setzero_si128(); // of both halves of a register
    for (; i + 16 <= n; i += 16) sums = _mm_add_epi64(sums, _mm_sad_epu8(load(bytes + i), _mm_setzero_si128()));
    sum = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_add_epi64(sums, _mm_unpackhi_epi64(sums, sums))));
#endif
    for (; i < n; ++i) sum += bytes[i];
    return static_cast<std::uint8_t>(sum);
}

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
    : m_evens(split),
      m_odds(split + n / 2),
      m_lastEven(128),
      // The last even byte, before the first odd one: all differences to it, each stored plus 128, and 128 before them.
      m_lastOdd(static_cast<std::uint8_t>(sumOf(split, n / 2) + (n / 2 + 1) * 128)) {}

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

class ZipBlockCompressor::Method {
public:
    virtual ~Method() = default;
    /// As ZipBlockCompressor's, in at most `room` bytes; 0 if they do not suffice.
    virtual std::size_t compress(const std::uint8_t* split, std::size_t n, Samples samples, std::uint8_t* to,
                                 std::size_t room) = 0;
};

class ZipBlockCompressor::LibDeflate : public Method {
public:
    /// `level` 1 (fast) to 12.
    explicit LibDeflate(int level) : m_compressor(libdeflate_alloc_compressor(level)) {
        if (m_compressor == nullptr) throw std::bad_alloc();
    }
    ~LibDeflate() override { libdeflate_free_compressor(m_compressor); }
    LibDeflate(const LibDeflate&) = delete;
    LibDeflate& operator=(const LibDeflate&) = delete;

    std::size_t compress(const std::uint8_t* split, std::size_t n, Samples, std::uint8_t* to,
                         std::size_t room) override {
        return libdeflate_zlib_compress(m_compressor, split, n, to, room);
    }

private:
    libdeflate_compressor* m_compressor;
};

#if ORVEX_ISAL
/// ISA-L, and libdeflate for blocks without noise: there ISA-L's short search misses too much, and there is time.
class ZipBlockCompressor::IsaL : public Method {
public:
    IsaL() : m_levelBuffer(ISAL_DEF_LVL2_LARGE) {
        isal_deflate_init(&m_stream);
        m_stream.level = 2; // as fast as 1, and 2 % smaller where samples have 32 bits
        m_stream.level_buf = m_levelBuffer.data();
        m_stream.level_buf_size = static_cast<std::uint32_t>(m_levelBuffer.size());
    }

    std::size_t compress(const std::uint8_t* split, std::size_t n, Samples samples, std::uint8_t* to,
                         std::size_t room) override {
        const std::size_t size = compressFast(split, n, to, room);
        // Found by trial, so that a file exceeds the stock codec's by 3 % at most: see ZipSizes among the benchmarks.
        const double withoutNoise = samples == Samples::Of16Bits ? 1.0 / 7.0 : 0.94;
        if (size == 0 || static_cast<double>(size) > static_cast<double>(n) * withoutNoise) return size;
        m_again.resize(size);
        const std::size_t again = m_thorough.compress(split, n, samples, m_again.data(), size - 1);
        if (again == 0) return size;
        std::memcpy(to, m_again.data(), again);
        return again;
    }

private:
    std::size_t compressFast(const std::uint8_t* split, std::size_t n, std::uint8_t* to, std::size_t room) {
        isal_deflate_reset(&m_stream);
        m_stream.gzip_flag = IGZIP_ZLIB; // the library replaces it once it has written the stream's header
        m_stream.next_out = to;
        m_stream.avail_out = static_cast<std::uint32_t>(room);
        // The first half holds the samples' low bytes, mostly noise, the second half their high ones. The library
        // computes new Huffman codes where it is told to flush: this makes files 5 % smaller.
        const std::size_t half = n / 2;
        return add(split, half, false) && add(split + half, n - half, true) ? m_stream.total_out : 0;
    }

    /// False if there is no room.
    bool add(const std::uint8_t* bytes, std::size_t n, bool isLast) {
        m_stream.next_in = const_cast<std::uint8_t*>(bytes); // which the library only reads
        m_stream.avail_in = static_cast<std::uint32_t>(n);
        m_stream.end_of_stream = isLast;
        m_stream.flush = isLast ? NO_FLUSH : SYNC_FLUSH;
        return isal_deflate(&m_stream) == COMP_OK && m_stream.avail_out != 0;
    }

    std::vector<std::uint8_t> m_levelBuffer;
    isal_zstream m_stream{};
    LibDeflate m_thorough{3};
    std::vector<std::uint8_t> m_again;
};
#endif

ZipBlockCompressor::ZipBlockCompressor(ZipGoal goal) {
    if (goal == ZipGoal::Small)
        m_method = std::make_unique<LibDeflate>(6); // above, 1 % costs three times the time
    else
#if ORVEX_ISAL
        m_method = std::make_unique<IsaL>();
#else
        m_method = std::make_unique<LibDeflate>(1);
#endif
}

ZipBlockCompressor::~ZipBlockCompressor() = default;

std::size_t ZipBlockCompressor::compress(const std::uint8_t* split, std::size_t n, Samples samples,
                                         std::uint8_t* compressed) {
    // One byte less than n: a block that is not smaller is stored as it is, and readers know it by its size.
    return n < 2 ? 0 : m_method->compress(split, n, samples, compressed, n - 1);
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
