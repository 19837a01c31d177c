#include "Report/JobRecord.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using Tools::Failure;
using Tools::frameMessage;
using Tools::JobEvent;
using Tools::JobRecord;
using Tools::JobResult;

TEST(JobRecord, CountsEveryFrameOnce) {
    JobRecord record({1, 2, 3, 4, 5}, {});
    record.done(2, "b");
    record.skipped(1, "a");
    record.failed(4, "d", "Frame 4: no.", Failure::Kind::Output);
    const JobResult result = record.result();
    EXPECT_EQ(result.done, 1u);
    EXPECT_EQ(result.skipped, 1u);
    ASSERT_EQ(result.failed.size(), 1u);
    EXPECT_EQ(result.failed.front().frame, 4);
    EXPECT_EQ(result.failed.front().text, "Frame 4: no.");
    EXPECT_EQ(result.failed.front().kind, Failure::Kind::Output);
    EXPECT_EQ(result.left, (std::vector<std::int32_t>{3, 5}));
}

TEST(JobRecord, ListsFailedFramesInAscendingOrderAndThoseLeftInTheJobs) {
    JobRecord record({9, 7, 5, 3}, {});
    record.failed(9, "", "Frame 9: no.", Failure::Kind::WrongUse);
    record.failed(5, "", "Frame 5: no.", Failure::Kind::WrongUse);
    const JobResult result = record.result();
    ASSERT_EQ(result.failed.size(), 2u);
    EXPECT_EQ(result.failed.front().frame, 5);
    EXPECT_EQ(result.left, (std::vector<std::int32_t>{7, 3}));
}

TEST(JobRecord, TellsItsListenerWhatHappens) {
    std::vector<std::string> told;
    JobRecord record({1, 2, 3}, [&](const JobEvent& event) {
        static constexpr const char* kinds[] = {"done", "skipped", "failed", "note"};
        told.push_back(kinds[static_cast<int>(event.kind)] + (' ' + std::to_string(event.frame)) + ' ' + event.file +
                       ' ' + event.text);
    });
    record.note("Frames are missing.");
    record.done(1, "a.exr");
    record.skipped(2, "b.exr");
    record.failed(3, "c.exr", "Frame 3 (c.exr): no.", Failure::Kind::Correction);
    EXPECT_EQ(told, (std::vector<std::string>{"note 0  Frames are missing.", "done 1 a.exr ", "skipped 2 b.exr ",
                                              "failed 3 c.exr Frame 3 (c.exr): no."}));
}

TEST(JobRecord, TellsItsListenerOneThingAtATime) {
    std::vector<std::int32_t> frames(400);
    for (std::size_t i = 0; i < frames.size(); ++i) frames[i] = static_cast<std::int32_t>(i);
    std::vector<std::int32_t> told; // not guarded: the record does it
    JobRecord record(frames, [&](const JobEvent& event) { told.push_back(event.frame); });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 100; ++i) record.done(thread * 100 + i, "a");
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(told.size(), 400u);
    EXPECT_EQ(record.result().done, 400u);
}

TEST(JobRecord, NamesTheFileOfAFrameOnce) {
    EXPECT_EQ(frameMessage(7, "p.0007.exr", "It is cut off."), "Frame 7 (p.0007.exr): It is cut off.");
    EXPECT_EQ(frameMessage(7, "p.0007.exr", "p.0007.exr: cut off."), "Frame 7: p.0007.exr: cut off.");
    EXPECT_EQ(frameMessage(7, "", "It is cut off."), "Frame 7: It is cut off.");
}
