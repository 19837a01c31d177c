#include "Progress.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Support/FailureText.h"

using Program::Progress;

namespace {

/// A progress whose clock is set by hand and whose text is kept.
struct Recorder {
    std::string text;
    double time = 100.0;
    Progress progress;

    Recorder(Progress::Mode mode, std::size_t total, bool useColor = false, unsigned int columns = 80)
        : progress(mode, total,
                   {[this](const std::string& part) { text += part; }, [this] { return time; }, useColor, columns}) {}

    std::string takeText() { return std::exchange(text, {}); }
};

} // namespace

TEST(Progress, RewritesOneLineOnATerminal) {
    Recorder recorder(Progress::Mode::Bar, 100);
    recorder.time += 2.0;
    recorder.progress.done(1001, "f.1001.exr");
    EXPECT_EQ(recorder.takeText(), "\r\x1b[K1 of 100 frames (1 %), 0.5 frames/s, 3 min 18 s left, 0 errors");
    recorder.time += 2.0;
    recorder.progress.done(1002, "f.1002.exr");
    EXPECT_EQ(recorder.takeText(), "\r\x1b[K2 of 100 frames (2 %), 0.5 frames/s, 3 min 16 s left, 0 errors");
}

TEST(Progress, DoesNotFlickerOnATerminal) {
    Recorder recorder(Progress::Mode::Bar, 3);
    recorder.time += 1.0;
    recorder.progress.done(1, "a");
    recorder.takeText();
    recorder.time += 0.01;
    recorder.progress.done(2, "b");
    EXPECT_EQ(recorder.takeText(), "");
}

TEST(Progress, CutsTheLineToTheTerminal) {
    Recorder recorder(Progress::Mode::Bar, 100, false, 20);
    recorder.progress.done(1, "a");
    EXPECT_EQ(recorder.takeText(), "\r\x1b[K1 of 100 frames (1 ");
}

TEST(Progress, WritesALineAtMostEveryTenSecondsInALog) {
    Recorder recorder(Progress::Mode::Lines, 4);
    recorder.time += 5.0;
    recorder.progress.done(1, "a");
    EXPECT_EQ(recorder.takeText(), "1 of 4 frames (25 %), 0.2 frames/s, 15 s left, 0 errors\n");
    recorder.time += 5.0;
    recorder.progress.done(2, "b");
    EXPECT_EQ(recorder.takeText(), "");
    recorder.time += 5.0;
    recorder.progress.done(3, "c");
    EXPECT_EQ(recorder.takeText(), "3 of 4 frames (75 %), 0.2 frames/s, 5 s left, 0 errors\n");
}

TEST(Progress, TellsTheLastFrameOnce) {
    Recorder recorder(Progress::Mode::Lines, 1);
    recorder.time += 5.0;
    recorder.progress.done(1, "a");
    recorder.progress.end();
    EXPECT_EQ(recorder.takeText(), "1 of 1 frames (100 %), 0.2 frames/s, 0 errors\n");
}

TEST(Progress, TellsLastWhatStayedUnshadedInEveryModeForPeople) {
    const std::string told = "Not corrected for shading: N, depth\\x1B.Z (use --shading-layers to choose layers)\n";
    Recorder lines(Progress::Mode::Lines, 0);
    lines.progress.end("", {"N", "depth\x1b.Z"});
    EXPECT_EQ(lines.takeText(), "0 of 0 frames (100 %), 0 errors\n" + told);
    Recorder silent(Progress::Mode::None, 0);
    silent.progress.end("", {"N", "depth\x1b.Z"});
    EXPECT_EQ(silent.takeText(), told);
}

TEST(Progress, TellsProgramsWhatStayedUnshaded) {
    Recorder recorder(Progress::Mode::Json, 0);
    recorder.takeText();
    recorder.progress.end("", {"N", "Z"});
    EXPECT_EQ(recorder.takeText(),
              "{\"event\":\"end\",\"done\":0,\"skipped\":0,\"failed\":0,\"total\":0,\"seconds\":0.0,"
              "\"unshaded\":[\"N\",\"Z\"]}\n");
}

TEST(Progress, TellsWhereTheFramesAreIfThereIsAny) {
    Recorder recorder(Progress::Mode::Lines, 1);
    recorder.time += 5.0;
    recorder.progress.done(1, "out/f.0001.exr");
    recorder.progress.end("out/f.%04d.exr");
    EXPECT_EQ(recorder.takeText(), "1 of 1 frames (100 %), 0.2 frames/s, 0 errors\nFrames: out/f.%04d.exr\n");
    Recorder failing(Progress::Mode::Lines, 1);
    failing.time += 5.0;
    failing.progress.failed(1, "out/f.0001.exr", "Frame 1: no.");
    failing.takeText();
    failing.progress.end("out/f.%04d.exr");
    EXPECT_EQ(failing.takeText(), "1 of 1 frames (100 %), 0.2 frames/s, 1 error\n");
    Recorder silent(Progress::Mode::None, 1);
    silent.progress.done(1, "out/f.0001.exr");
    silent.progress.end("out/f.%04d.exr");
    EXPECT_EQ(silent.takeText(), "");
}

TEST(Progress, TellsARateOfAnySizeInDigits) {
    for (const auto& [seconds, rate] : {std::pair<double, const char*>{0.0000625, "16000"},
                                        {0.00100001, "1000"},
                                        {0.03, "33.3"},
                                        {400.0, "0.0025"},
                                        {100000.0, "less than 0.001"}}) {
        Recorder recorder(Progress::Mode::Lines, 1);
        recorder.time += seconds;
        recorder.progress.done(1, "a");
        recorder.progress.end();
        EXPECT_EQ(recorder.takeText(), std::string("1 of 1 frames (100 %), ") + rate + " frames/s, 0 errors\n");
    }
}

TEST(Progress, TellsAFailedFrameAtOnceAboveTheBar) {
    Recorder recorder(Progress::Mode::Bar, 2);
    recorder.time += 1.0;
    recorder.progress.done(1, "a");
    recorder.takeText();
    recorder.progress.failed(2, "b", "Frame 2: no.");
    EXPECT_EQ(recorder.takeText(), "\r\x1b[KFrame 2: no.\n");
    recorder.progress.end();
    EXPECT_EQ(recorder.takeText(), "\r\x1b[K2 of 2 frames (100 %), 2 frames/s, 1 error\n");
}

TEST(Progress, ShowsFailuresInRedWhereColorIsWanted) {
    Recorder recorder(Progress::Mode::None, 2, true);
    recorder.progress.failed(2, "b", "Frame 2: no.");
    EXPECT_EQ(recorder.takeText(), "\x1b[31mFrame 2: no.\x1b[0m\n");
}

TEST(Progress, CountsSkippedFramesButNotIntoTheRate) {
    Recorder recorder(Progress::Mode::Lines, 10);
    for (int frame = 0; frame < 8; ++frame) recorder.progress.skipped(frame, "a");
    recorder.takeText();
    recorder.time += 10.0;
    recorder.progress.done(8, "a");
    EXPECT_EQ(recorder.takeText(), "9 of 10 frames (90 %), 0.1 frames/s, 10 s left, 8 skipped, 0 errors\n");
}

TEST(Progress, WritesOneJsonObjectPerEvent) {
    Recorder recorder(Progress::Mode::Json, 2);
    recorder.time += 1.5;
    recorder.progress.done(1, "a.exr");
    recorder.progress.failed(2, "b.exr", "no \"b\"");
    recorder.progress.end();
    EXPECT_EQ(recorder.text, R"({"event":"start","version":1,"frames":2}
{"event":"frame","frame":1,"state":"done","file":"a.exr","done":1,"skipped":0,"failed":0,"total":2}
{"event":"frame","frame":2,"state":"failed","file":"b.exr","message":"no \"b\"","done":1,"skipped":0,"failed":1,"total":2}
{"event":"end","done":1,"skipped":0,"failed":1,"total":2,"seconds":1.5}
)");
}

TEST(Progress, SurvivesFileNamesThatAreNoText) {
    Recorder recorder(Progress::Mode::Json, 1);
    recorder.takeText();
    recorder.progress.done(1, "\xff.exr");
    EXPECT_EQ(
        recorder.takeText(),
        "{\"event\":\"frame\",\"frame\":1,\"state\":\"done\",\"file\":\"\xef\xbf\xbd.exr\",\"done\":1,\"skipped\":0,"
        "\"failed\":0,\"total\":1}\n");
}

TEST(Progress, IsQuietOnRequest) {
    Recorder recorder(Progress::Mode::None, 1);
    recorder.progress.done(1, "a");
    recorder.progress.end();
    EXPECT_EQ(recorder.text, "");
}

TEST(Progress, CountsReportsOfSeveralThreads) {
    Recorder recorder(Progress::Mode::Lines, 400);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int frame = 0; frame < 100; ++frame) recorder.progress.done(frame, "a");
        });
    }
    for (std::thread& thread : threads) thread.join();
    recorder.takeText();
    recorder.progress.end();
    EXPECT_EQ(recorder.takeText(), "400 of 400 frames (100 %), 0 errors\n");
}

TEST(Progress, ChoosesItsModeByTheTerminal) {
    EXPECT_EQ(Progress::parseMode("auto", true), Progress::Mode::Bar);
    EXPECT_EQ(Progress::parseMode("auto", false), Progress::Mode::Lines);
    EXPECT_EQ(Progress::parseMode("json", true), Progress::Mode::Json);
    EXPECT_EQ(failureOf([] { Progress::parseMode("loud", true); }),
              "wrong use: Progress \"loud\" is not one of auto, bar, lines, json, none.");
}

TEST(Progress, WritesTimesForPeople) {
    EXPECT_EQ(Program::durationText(0.0), "0 s");
    EXPECT_EQ(Program::durationText(59.2), "1 min 00 s");
    EXPECT_EQ(Program::durationText(7619.0), "2 h 06 min");
}
