#include "System/Interruption.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

#include "Support/TemporaryFolder.h"
#include "System/AtomicFile.h"

using Tools::AtomicFile;
using Tools::Interruption;

// Signal handlers and the flag belong to the process, so every case runs in a child that exits with what it saw.

TEST(InterruptionDeathTest, OnlyNotesTheFirstSignal) {
    EXPECT_EXIT(
        {
            Interruption::install();
            if (Interruption::requested()) std::_Exit(1);
            std::raise(SIGTERM);
            std::_Exit(Interruption::requested() ? Interruption::exitStatus() : 1);
        },
        testing::ExitedWithCode(143), "");
}

TEST(InterruptionDeathTest, TakesARepeatedSigtermForTheFirstOne) {
    EXPECT_EXIT(
        {
            Interruption::install();
            std::raise(SIGTERM);
            std::raise(SIGTERM);
            std::_Exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST(InterruptionDeathTest, TakesSignalsBackFromADriver) {
    EXPECT_EXIT(
        {
            Interruption::install();
            std::signal(SIGTERM, SIG_DFL);
            std::signal(SIGINT, SIG_DFL);
            Interruption::takeBack();
            std::raise(SIGTERM);
            std::_Exit(Interruption::requested() ? 7 : 1);
        },
        testing::ExitedWithCode(7), "");
}

TEST(InterruptionDeathTest, LeavesTheSignalsOfAProgramThatHasNotInstalledIt) {
    EXPECT_EXIT(
        {
            Interruption::takeBack();
            std::raise(SIGTERM);
        },
        testing::KilledBySignal(SIGTERM), "");
}

TEST(InterruptionDeathTest, TellsAPersonFromAFarm) {
    EXPECT_EXIT(
        {
            Interruption::install();
            std::raise(SIGINT);
            std::_Exit(Interruption::exitStatus());
        },
        testing::ExitedWithCode(130), "");
}

TEST(InterruptionDeathTest, IgnoresSignalsThatErrorsOfWritingRaise) {
    EXPECT_EXIT(
        {
            Interruption::install();
            std::raise(SIGXFSZ);
            std::raise(SIGPIPE);
            std::_Exit(Interruption::requested() ? 1 : 7);
        },
        testing::ExitedWithCode(7), "");
}

TEST(InterruptionDeathTest, RemovesTemporaryFilesAndEndsAtTheSecondSignal) {
    Support::TemporaryFolder folder;
    EXPECT_EXIT(
        {
            Interruption::install();
            AtomicFile file(folder.path("f.exr"));
            std::ofstream(file.temporaryPath()) << "half";
            std::raise(SIGINT);
            std::raise(SIGTERM);
        },
        testing::ExitedWithCode(143), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}
