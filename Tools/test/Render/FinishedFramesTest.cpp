#include "Render/FinishedFrames.h"

#include <gtest/gtest.h>

#include <vector>

#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

using Tools::FilePattern;
using Tools::FinishedFrames;
using State = Tools::FinishedFrames::State;

namespace {

struct Sequence : Support::TemporaryFolder {
    FilePattern pattern = FilePattern::parse(path("f.####.exr"), FilePattern::Use::Output);
    std::string frame = write("f.0001.exr", "picture");

    std::string list() const {
        for (const auto& entry : std::filesystem::directory_iterator(path())) {
            if (entry.path().extension() == ".frames") return entry.path();
        }
        return "";
    }
};

} // namespace

TEST(FinishedFrames, KnowsAFrameThatAnEarlierRunFinished) {
    Sequence sequence;
    FinishedFrames(sequence.pattern).add(sequence.frame, "key");
    EXPECT_EQ(FinishedFrames(sequence.pattern).stateOf(sequence.frame, "key"), State::Finished);
}

TEST(FinishedFrames, WantsAFrameAgainWhoseKeyChanged) {
    Sequence sequence;
    FinishedFrames(sequence.pattern).add(sequence.frame, "key");
    EXPECT_EQ(FinishedFrames(sequence.pattern).stateOf(sequence.frame, "other"), State::Outdated);
}

TEST(FinishedFrames, WantsAFrameAgainThatWasCutShort) {
    Sequence sequence;
    FinishedFrames(sequence.pattern).add(sequence.frame, "key");
    std::filesystem::resize_file(sequence.frame, 3);
    EXPECT_EQ(FinishedFrames(sequence.pattern).stateOf(sequence.frame, "key"), State::Unknown);
}

TEST(FinishedFrames, WantsAFrameAgainThatIsMissingOrWasNeverFinished) {
    Sequence sequence;
    EXPECT_EQ(FinishedFrames(sequence.pattern).stateOf(sequence.frame, "key"), State::Unknown);
    FinishedFrames(sequence.pattern).add(sequence.frame, "key");
    std::filesystem::remove(sequence.frame);
    EXPECT_EQ(FinishedFrames(sequence.pattern).stateOf(sequence.frame, "key"), State::Missing);
}

TEST(FinishedFrames, KeepsAListPerSequence) {
    Sequence sequence;
    FinishedFrames(sequence.pattern).add(sequence.frame, "key");
    const FilePattern other = FilePattern::parse(sequence.path("g.####.exr"), FilePattern::Use::Output);
    EXPECT_EQ(FinishedFrames(other).stateOf(sequence.frame, "key"), State::Unknown);
}

TEST(FinishedFrames, ReadsTheListsOfOtherMachinesToo) {
    Sequence sequence;
    FinishedFrames(sequence.pattern).add(sequence.frame, "key");
    std::filesystem::rename(sequence.list(), sequence.path(".f.%04d.exr.elsewhere.frames"));
    EXPECT_EQ(FinishedFrames(sequence.pattern).stateOf(sequence.frame, "key"), State::Finished);
}

TEST(FinishedFrames, OverlooksLinesThatAreNotUnderstood) {
    Sequence sequence;
    FinishedFrames(sequence.pattern).add(sequence.frame, "key");
    std::ofstream(sequence.list(), std::ios::app)
        << "\n\n12\nx y z\n 1 2 3 4 5\n99999999999999999999999 1 key f.0001.exr";
    EXPECT_EQ(FinishedFrames(sequence.pattern).stateOf(sequence.frame, "key"), State::Finished);
}

TEST(FinishedFrames, StartsANewLineAfterOneThatWasCutShort) {
    Sequence sequence;
    FinishedFrames(sequence.pattern).add(sequence.frame, "key");
    std::ofstream(sequence.list(), std::ios::app) << "123 45";
    FinishedFrames(sequence.pattern).add(sequence.frame, "second");
    EXPECT_EQ(FinishedFrames(sequence.pattern).stateOf(sequence.frame, "second"), State::Finished);
}

TEST(FinishedFrames, SaysThatTheListCannotBeWritten) {
    Sequence sequence;
    FinishedFrames frames(sequence.pattern);
    frames.add(sequence.frame, "key");
    const std::string list = sequence.list();
    std::filesystem::remove(list);
    std::filesystem::create_directory(list);
    EXPECT_EQ(failureOf([&] { frames.add(sequence.frame, "key"); }),
              "output: List of finished frames \"" + list + "\" could not be written: Is a directory.");
}

TEST(FinishedFrames, GivesTextsTheirPublishedFingerprints) {
    // Test vectors published with the hash: FNV-1a, 64 bit.
    EXPECT_EQ(FinishedFrames::fingerprint(""), "cbf29ce484222325");
    EXPECT_EQ(FinishedFrames::fingerprint("a"), "af63dc4c8601ec8c");
    EXPECT_EQ(FinishedFrames::fingerprint("foobar"), "85944171f73967e8");
}

TEST(FinishedFrames, TellsVersionsOfAnInputApart) {
    Sequence sequence;
    const std::string before = FinishedFrames::identity(sequence.frame);
    sequence.write("f.0001.exr", "another picture");
    EXPECT_NE(FinishedFrames::identity(sequence.frame), before);
    EXPECT_EQ(FinishedFrames::identity(sequence.path("no")), sequence.path("no") + " missing");
}
