#include "Inspect/TextFile.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

TEST(TextFile, holdsTheWholeText) {
    const TemporaryFolder folder;
    Host::writeTextFile(folder.path("a.txt"), "line\n");
    EXPECT_EQ("line\n", folder.text("a.txt"));
}

TEST(TextFile, isAFailureOfTheOutputWhereNoneCanBe) {
    const TemporaryFolder folder;
    folder.file("a.txt/b", "x");
    EXPECT_EQ('4', failureOf([&] { Host::writeTextFile(folder.path("a.txt"), "line\n"); }).front());
}
