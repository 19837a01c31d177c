#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

struct libdeflate_compressor;
struct libdeflate_decompressor;

namespace HostImage {

/// Splits a block's bytes into the even and the odd ones and stores each as its difference to the one before (plus
/// 128), as OpenEXR's ZIP, ZIPS and RLE do before compressing. `split` and `bytes` hold n bytes and do not overlap.
void splitAndPredict(const std::uint8_t* bytes, std::uint8_t* split, std::size_t n);

/// The reverse. `split` is overwritten.
void reconstructAndMerge(std::uint8_t* split, std::uint8_t* bytes, std::size_t n);

/// Compresses OpenEXR ZIP and ZIPS blocks (zlib streams) with libdeflate. One per thread.
class ZipBlockCompressor {
public:
    /// `level` 1 (fast) … 12. Throws std::bad_alloc.
    explicit ZipBlockCompressor(int level);
    ~ZipBlockCompressor();
    ZipBlockCompressor(const ZipBlockCompressor&) = delete;
    ZipBlockCompressor& operator=(const ZipBlockCompressor&) = delete;

    /// Writes the compressed block to `compressed` and returns its size; 0 if it would not be smaller than n bytes, the
    /// block is then to be stored as it is. `compressed` has room for n bytes.
    std::size_t compress(const std::uint8_t* bytes, std::size_t n, std::uint8_t* compressed);

private:
    libdeflate_compressor* m_compressor;
    std::vector<std::uint8_t> m_split;
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
    bool decompress(const std::uint8_t* compressed, std::size_t compressedSize, std::uint8_t* bytes, std::size_t n);

private:
    libdeflate_decompressor* m_decompressor;
    std::vector<std::uint8_t> m_split;
};

} // namespace HostImage
