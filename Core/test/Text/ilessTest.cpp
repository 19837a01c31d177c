#include "Text/iless.h"

#include <gtest/gtest.h>

using Text::iless;

TEST(iless, IgnoresTheCaseOfLetters) {
    EXPECT_FALSE(iless()("red", "RED"));
    EXPECT_FALSE(iless()("RED", "red"));
    EXPECT_TRUE(iless()("arri", "BlackMagic"));
    EXPECT_TRUE(iless()("ARRI", "blackMagic"));
}

TEST(iless, PutsAProperPrefixFirst) {
    EXPECT_TRUE(iless()("ALEXA", "alexa mini"));
    EXPECT_FALSE(iless()("alexa mini", "ALEXA"));
    EXPECT_TRUE(iless()("", "a"));
}

TEST(iless, OrdersOtherCharactersByTheirBytes) {
    EXPECT_TRUE(iless()("a-", "a_"));
    EXPECT_TRUE(iless()("z", "\xc4"));
    EXPECT_FALSE(iless()("\xc4", "z"));
}
