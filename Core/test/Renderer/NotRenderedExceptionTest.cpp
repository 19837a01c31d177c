#include "Renderer/NotRenderedException.h"

#include <gtest/gtest.h>

TEST(NotRenderedException, PassesOnTheTwoTextsOfItsThrower) {
    const Renderer::NotRenderedException exception("Brief.", "Reason: None");
    EXPECT_STREQ(exception.what(), "Brief.");
    EXPECT_EQ(exception.detailedDescription(), "Brief.\nReason: None\n");
}
