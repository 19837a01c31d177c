#include "HalfConversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

// One at a time takes the plain path (less than a vector), all together the processor's instructions.
std::vector<float> oneByOne(const std::vector<std::uint16_t>& halfs) {
    std::vector<float> floats(halfs.size());
    for (std::size_t i = 0; i < halfs.size(); ++i) Image::halfToFloat(&halfs[i], &floats[i], 1);
    return floats;
}

std::vector<std::uint16_t> oneByOne(const std::vector<float>& floats) {
    std::vector<std::uint16_t> halfs(floats.size());
    for (std::size_t i = 0; i < floats.size(); ++i) Image::floatToHalf(&floats[i], &halfs[i], 1);
    return halfs;
}

std::vector<std::uint16_t> everyHalf() {
    std::vector<std::uint16_t> halfs(65536);
    for (std::size_t i = 0; i < halfs.size(); ++i) halfs[i] = static_cast<std::uint16_t>(i);
    return halfs;
}

TEST(HalfConversion, GivesTheSameBitsInBulkAndOneByOneForEveryHalf) {
    const std::vector<std::uint16_t> halfs = everyHalf();
    std::vector<float> bulk(halfs.size());
    Image::halfToFloat(halfs.data(), bulk.data(), halfs.size());
    const std::vector<float> single = oneByOne(halfs);
    EXPECT_EQ(std::memcmp(bulk.data(), single.data(), bulk.size() * sizeof(float)), 0);
}

TEST(HalfConversion, GivesTheSameBitsPastTheCachesWhereverTheFloatsBegin) {
    const std::vector<std::uint16_t> halfs = everyHalf();
    const std::vector<float> single = oneByOne(halfs);
    std::vector<float> bulk(halfs.size() + 4);
    for (std::size_t begin = 0; begin < 4; ++begin) {
        std::fill(bulk.begin(), bulk.end(), -1.0f);
        Image::halfToDistantFloat(halfs.data(), bulk.data() + begin, halfs.size() - begin);
        EXPECT_EQ(std::memcmp(bulk.data() + begin, single.data(), (halfs.size() - begin) * sizeof(float)), 0) << begin;
        EXPECT_EQ(bulk[halfs.size()], -1.0f);
    }
}

TEST(HalfConversion, BringsEveryHalfThatIsANumberBackUnchanged) {
    std::vector<std::uint16_t> halfs;
    for (const std::uint16_t half : everyHalf())
        if ((half & 0x7c00) != 0x7c00 || (half & 0x3ff) == 0) halfs.push_back(half);
    std::vector<float> floats(halfs.size());
    std::vector<std::uint16_t> back(halfs.size());
    Image::halfToFloat(halfs.data(), floats.data(), halfs.size());
    Image::floatToHalf(floats.data(), back.data(), halfs.size());
    EXPECT_EQ(back, halfs);
    EXPECT_EQ(oneByOne(floats), halfs);
}

TEST(HalfConversion, RoundsFloatsAlikeInBulkAndOneByOne) {
    std::vector<float> floats;
    for (std::uint64_t bits = 0; bits < (std::uint64_t{1} << 32); bits += 9973) {
        const std::uint32_t word = static_cast<std::uint32_t>(bits);
        float value;
        std::memcpy(&value, &word, sizeof value);
        floats.push_back(value);
    }
    floats.resize(floats.size() / 8 * 8);
    std::vector<std::uint16_t> bulk(floats.size());
    Image::floatToHalf(floats.data(), bulk.data(), floats.size());
    EXPECT_EQ(bulk, oneByOne(floats));
}

TEST(HalfConversion, KnowsTheWellKnownValues) {
    const std::vector<float> floats{0.0f, -0.0f, 1.0f, 65504.0f, 65519.0f, 65520.0f, 0x1p-24f, 0x1p-25f};
    EXPECT_EQ(oneByOne(floats), (std::vector<std::uint16_t>{0, 0x8000, 0x3c00, 0x7bff, 0x7bff, 0x7c00, 1, 0}));
}

TEST(HalfConversion, KeepsNotANumber) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::uint16_t half;
    float back;
    Image::floatToHalf(&nan, &half, 1);
    Image::halfToFloat(&half, &back, 1);
    EXPECT_TRUE(std::isnan(back));
}

} // namespace
