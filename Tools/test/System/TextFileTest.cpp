#include "System/TextFile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

TEST(TextFile, holdsTheWholeText) {
    const Support::TemporaryFolder folder;
    Tools::writeTextFile(folder.path("a.txt"), "line\n");
    EXPECT_EQ("line\n", folder.text("a.txt"));
}

TEST(TextFile, isNotToReplaceWhatItIsMadeOf) {
    const Support::TemporaryFolder folder;
    folder.write("a.olcf", "x");
    std::filesystem::create_symlink(folder.path("a.olcf"), folder.path("b.svg"));
    EXPECT_EQ(
        "wrong use: The output would replace its own input, \"" + folder.path("b.svg") + "\"; choose another output.",
        failureOf([&] { Tools::refuseToReplace(folder.path("a.olcf"), folder.path("b.svg")); }));
    Tools::refuseToReplace(folder.path("a.olcf"), folder.path("c.svg"));
}

TEST(TextFile, isAFailureOfTheOutputWhereNoneCanBe) {
    const Support::TemporaryFolder folder;
    folder.write("a.txt/b", "x");
    const std::string failure = failureOf([&] { Tools::writeTextFile(folder.path("a.txt"), "line\n"); });
    EXPECT_TRUE(failure.starts_with("output: "));
}
