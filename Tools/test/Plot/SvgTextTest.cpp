#include "Plot/SvgText.h"

#include <gtest/gtest.h>

using Tools::markupText;

TEST(MarkupText, escapesMarkup) { EXPECT_EQ("&lt;a href=&quot;b&quot;&gt;&amp;", markupText("<a href=\"b\">&")); }

TEST(MarkupText, keepsLettersOfAllScripts) { EXPECT_EQ("Größe 焦点 𝄞", markupText("Größe 焦点 𝄞")); }

TEST(MarkupText, replacesControlCharacters) {
    EXPECT_EQ("a\xEF\xBF\xBD\xEF\xBF\xBD", markupText(std::string("a\0\x1B", 3)));
}

TEST(MarkupText, replacesBytesThatAreNoText) {
    EXPECT_EQ(
        "a\xEF\xBF\xBD"
        "b",
        markupText("a\xFC"
                   "b"));
}

TEST(MarkupText, replacesOverlongForms) { EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD", markupText("\xC0\xBC")); }

TEST(MarkupText, replacesATextThatEndsWithinALetter) { EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD", markupText("\xE7\x84")); }
