#include "Report/MemorySize.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"

using Tools::memorySizeText;
using Tools::parseMemorySize;

TEST(MemorySize, ReadsBytesAndUnitsOf1024) {
    EXPECT_EQ(parseMemorySize("65536"), 65536u);
    EXPECT_EQ(parseMemorySize("64k"), 65536u);
    EXPECT_EQ(parseMemorySize("512M"), 536870912u);
    EXPECT_EQ(parseMemorySize("8G"), 8589934592u);
    EXPECT_EQ(parseMemorySize("2T"), 2199023255552u);
}

TEST(MemorySize, ReadsFractionsBlanksAndLongUnits) {
    EXPECT_EQ(parseMemorySize("1.5 GiB"), 1610612736u);
    EXPECT_EQ(parseMemorySize("1gb"), 1073741824u);
    EXPECT_EQ(parseMemorySize("100 B"), 100u);
}

TEST(MemorySize, RefusesEverythingElseNamingTheText) {
    const auto failure = [](const std::string& text) { return failureOf([&] { parseMemorySize(text); }); };
    const std::string begin = "wrong use: Memory size \"";
    const std::string examples = " Examples: 8G, 512M, 1.5G.";
    EXPECT_EQ(failure(""), begin + "\" is not understood: it does not begin with a number." + examples);
    EXPECT_EQ(failure("G"), begin + "G\" is not understood: it does not begin with a number." + examples);
    EXPECT_EQ(failure("nan"), begin + "nan\" is not understood: it does not begin with a number." + examples);
    EXPECT_EQ(failure("8X"), begin + "8X\" is not understood: its unit is not K, M, G or T." + examples);
    EXPECT_EQ(failure("8G!"), begin + "8G!\" is not understood: its unit is not K, M, G or T." + examples);
    EXPECT_EQ(failure("0"), begin + "0\" is not understood: it must be more than 0." + examples);
    EXPECT_EQ(failure("-1G"), begin + "-1G\" is not understood: it must be more than 0." + examples);
    EXPECT_EQ(failure("99999999999T"), begin + "99999999999T\" is not understood: it is too large." + examples);
}

TEST(MemorySize, IsWrittenForPeople) {
    EXPECT_EQ(memorySizeText(100), "100 bytes");
    EXPECT_EQ(memorySizeText(536870912), "512 MiB");
    EXPECT_EQ(memorySizeText(1610612736), "1.5 GiB");
}
