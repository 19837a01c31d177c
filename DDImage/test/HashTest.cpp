#include "DDImage/Hash.h"

#include <gtest/gtest.h>

using DD::Image::Hash;

TEST(Hash, IsTheCrc64OfEcma182) {
    Hash hash;
    hash.append("123456789");
    EXPECT_EQ(hash.value(), 0x6c40df5f0b497347u) << "the check value of that checksum's catalogue entry";
}

TEST(Hash, TellsATextFromTheSameTextWithItsTerminatingZero) {
    Hash text;
    text.append("12");
    Hash withZero;
    withZero.append("12", 3);
    EXPECT_NE(text, withZero);
}
