#include "ExitCode.h"

#include <gtest/gtest.h>

using Program::ExitCode;
using Program::exitCodeOf;
using Tools::Failure;
using Tools::JobResult;

namespace {

JobResult resultWith(std::initializer_list<Failure::Kind> kinds) {
    JobResult result;
    for (const Failure::Kind kind : kinds) result.failed.push_back({1, "Frame 1: no.", kind});
    return result;
}

} // namespace

TEST(ExitCode, SaysWhatKindOfFailureEndsTheProgram) {
    EXPECT_EQ(exitCodeOf(Failure::Kind::WrongUse), ExitCode::WrongUse);
    EXPECT_EQ(exitCodeOf(Failure::Kind::Environment), ExitCode::Environment);
    EXPECT_EQ(exitCodeOf(Failure::Kind::Output), ExitCode::Output);
    EXPECT_EQ(exitCodeOf(Failure::Kind::Correction), ExitCode::WrongUse);
}

TEST(ExitCode, SaysWhetherAllFramesOfAJobAreThere) {
    EXPECT_EQ(exitCodeOf(resultWith({})), ExitCode::Done);
    EXPECT_EQ(exitCodeOf(resultWith({Failure::Kind::Correction, Failure::Kind::WrongUse})), ExitCode::SomeFramesFailed);
}

TEST(ExitCode, SaysThatOutputCouldNotBeWrittenEvenIfOtherFramesFailedForAnotherReason) {
    EXPECT_EQ(exitCodeOf(resultWith({Failure::Kind::Correction, Failure::Kind::Output})), ExitCode::Output);
}
