#include "Exr/ZipBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes noise(std::size_t n) {
    Bytes bytes(n);
    std::uint32_t state = 7;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

/// The rule as OpenEXR's format description tells it, a byte at a time.
Bytes plainSplit(const Bytes& bytes) {
    Bytes split;
    for (std::size_t i = 0; i < bytes.size(); i += 2) split.push_back(bytes[i]);
    for (std::size_t i = 1; i < bytes.size(); i += 2) split.push_back(bytes[i]);
    for (std::size_t i = split.size(); i-- > 1;) split[i] = static_cast<std::uint8_t>(split[i] - split[i - 1] + 128);
    return split;
}

/// Around the sizes of a processor's registers, and more than a whole block.
constexpr std::size_t pieceSizes[] = {2, 6, 16, 30, 32, 34, 64, 100, 1000};

TEST(ZipBlock, IsSplitAsThePlainRuleDoesAtEveryLengthAndInPiecesOfAnySize) {
    for (std::size_t n = 0; n < 200; n += 2) {
        for (const std::size_t piece : pieceSizes) {
            const Bytes bytes = noise(n);
            Bytes split(n);
            Image::ByteSplitter splitter(split.data(), n);
            for (std::size_t i = 0; i < n; i += piece) splitter.add(bytes.data() + i, std::min(piece, n - i));
            EXPECT_EQ(split, plainSplit(bytes)) << n << " in pieces of " << piece;
        }
    }
}

TEST(ZipBlock, IsMergedFromWhatWasSplitAtEveryLengthAndInPiecesOfAnySize) {
    for (std::size_t n = 0; n < 200; n += 2) {
        for (const std::size_t piece : pieceSizes) {
            const Bytes bytes = noise(n);
            const Bytes split = plainSplit(bytes);
            Bytes back(n);
            Image::ByteMerger merger(split.data(), n);
            for (std::size_t i = 0; i < n; i += piece) merger.next(back.data() + i, std::min(piece, n - i));
            EXPECT_EQ(back, bytes) << n << " in pieces of " << piece;
        }
    }
}

TEST(ZipBlock, ComesBackFromItsCompressedForm) {
    Bytes split = noise(5000);
    for (std::uint8_t& byte : split) byte &= 3;
    Bytes compressed(split.size());
    const std::size_t size = Image::ZipBlockCompressor(1).compress(split.data(), split.size(), compressed.data());
    ASSERT_GT(size, 0u);
    Bytes back(split.size());
    EXPECT_TRUE(Image::ZipBlockDecompressor().decompress(compressed.data(), size, back.data(), back.size()));
    EXPECT_EQ(back, split);
}

TEST(ZipBlock, ThatWouldNotBecomeSmallerIsNotCompressed) {
    const Bytes bytes = noise(500);
    Bytes compressed(bytes.size());
    EXPECT_EQ(Image::ZipBlockCompressor(12).compress(bytes.data(), bytes.size(), compressed.data()), 0u);
}

TEST(ZipBlock, OfAnotherLengthThanToldIsRefused) {
    const Bytes bytes(1000);
    Bytes compressed(bytes.size());
    const std::size_t size = Image::ZipBlockCompressor(1).compress(bytes.data(), bytes.size(), compressed.data());
    Bytes back(1001);
    EXPECT_FALSE(Image::ZipBlockDecompressor().decompress(compressed.data(), size, back.data(), 999));
    EXPECT_FALSE(Image::ZipBlockDecompressor().decompress(compressed.data(), size, back.data(), 1001));
}

} // namespace
