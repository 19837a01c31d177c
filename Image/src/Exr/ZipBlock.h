#pragma once

#include <cstddef>
#include <cstdint>

#include <memory>

struct libdeflate_decompressor;

namespace Image {

enum class ZipGoal;

/// Before compressing, OpenEXR's ZIP, ZIPS and RLE put a block's even bytes before its odd ones, and store each as its
/// difference to the one before, plus 128. This does so piece by piece: a line is still in the processor's cache where
/// a block of many channels is not. Blocks and pieces have even sizes, since samples have.
class ByteSplitter {
public:
    /// The block's n bytes go to `split`.
    ByteSplitter(std::uint8_t* split, std::size_t n);
    /// The block's next n bytes; not more than are left of it.
    void add(const std::uint8_t* bytes, std::size_t n);

private:
    std::uint8_t* m_evens;
    std::uint8_t* m_odds;
    const std::uint8_t* m_endOfEvens;
    std::uint8_t m_lastEven;
    std::uint8_t m_lastOdd;
};

/// The reverse.
class ByteMerger {
public:
    ByteMerger(const std::uint8_t* split, std::size_t n);
    /// The block's next n bytes; not more than are left of it.
    void next(std::uint8_t* bytes, std::size_t n);

private:
    const std::uint8_t* m_evens;
    const std::uint8_t* m_odds;
    std::uint8_t m_lastEven;
    std::uint8_t m_lastOdd;
};

/// Compresses the split bytes of OpenEXR's ZIP and ZIPS blocks into zlib streams: with ISA-L and libdeflate, or for
/// small files (and on processors that ISA-L is not made for) with libdeflate alone. The bytes depend on nothing but
/// the block, and with ISA-L on the kind of processor. One per thread.
class ZipBlockCompressor {
public:
    /// What most of a block's bytes belong to.
    enum class Samples { Of16Bits, Of32Bits };

    /// Throws std::bad_alloc.
    explicit ZipBlockCompressor(ZipGoal goal);
    ~ZipBlockCompressor();
    ZipBlockCompressor(const ZipBlockCompressor&) = delete;
    ZipBlockCompressor& operator=(const ZipBlockCompressor&) = delete;

    /// Writes the compressed block to `compressed` and returns its size; 0 if it would not be smaller than n bytes, the
    /// block is then to be stored as it is, not split. `compressed` has room for n bytes, n < 2³¹. Throws
    /// std::bad_alloc.
    std::size_t compress(const std::uint8_t* split, std::size_t n, Samples samples, std::uint8_t* compressed);

private:
    class Method;
    class LibDeflate;
    class IsaL;

    std::unique_ptr<Method> m_method;
};

/// The reverse. One per thread.
class ZipBlockDecompressor {
public:
    /// Throws std::bad_alloc.
    ZipBlockDecompressor();
    ~ZipBlockDecompressor();
    ZipBlockDecompressor(const ZipBlockDecompressor&) = delete;
    ZipBlockDecompressor& operator=(const ZipBlockDecompressor&) = delete;

    /// False if the stream is damaged or does not hold exactly n bytes.
    bool decompress(const std::uint8_t* compressed, std::size_t compressedSize, std::uint8_t* split, std::size_t n);

private:
    libdeflate_decompressor* m_decompressor;
};

} // namespace Image
