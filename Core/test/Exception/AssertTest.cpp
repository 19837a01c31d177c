#include "Exception/Assert.h"

#include <gtest/gtest.h>

TEST(AssertDeathTest, StopsTheProcessWithFileLineAndTheCheckedExpression) {
    const int parts = 7;
    EXPECT_DEATH(ORVEX_ASSERT(parts == 8),
                 "^Core/test/Exception/AssertTest.cpp:[0-9]+: Assertion failed: parts == 8\n$");
}

TEST(Assert, LetsATrueExpressionPass) { ORVEX_ASSERT(1 + 1 == 2); }
