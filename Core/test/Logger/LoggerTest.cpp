#include "Logger/Logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>
#include <vector>

#include "Support/CommaLocale.h"
#include "Support/TemporaryFolder.h"
#include "Support/TextOfFile.h"

using std::chrono::microseconds;
using std::chrono::system_clock;
using Support::textOfFile;
using testing::MatchesRegex;

namespace {

const char* const stampPattern =
    "[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9] "
    "[0-9][0-9]:[0-9][0-9]:[0-9][0-9][.][0-9][0-9][0-9][0-9][0-9][0-9]: ";

class Logger : public testing::Test {
protected:
    Support::TemporaryFolder folder;
    const std::string path = folder.path("x.log");
};

void setTimeZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

// 2020-07-31 14:05:09 UTC.
system_clock::time_point julyWith(microseconds part) {
    return system_clock::time_point(std::chrono::seconds(1596204309) + part);
}

} // namespace

TEST(LoggerEntry, BeginsWithTheTimeInMicroseconds) {
    setTimeZone("UTC");
    EXPECT_EQ(Core::Logger::entryText(julyWith(microseconds(4211)), "message"), "2020-07-31 14:05:09.004211: message");
}

TEST(LoggerEntry, PadsTheFractionToSixDigits) {
    setTimeZone("UTC");
    EXPECT_EQ(Core::Logger::entryText(julyWith(microseconds(7)), "x"), "2020-07-31 14:05:09.000007: x");
    EXPECT_EQ(Core::Logger::entryText(julyWith(microseconds(0)), "x"), "2020-07-31 14:05:09.000000: x");
    EXPECT_EQ(Core::Logger::entryText(julyWith(microseconds(999999)), "x"), "2020-07-31 14:05:09.999999: x");
}

TEST(LoggerEntry, GivesLocalTime) {
    setTimeZone("XYZ-2"); // two hours east of Greenwich
    EXPECT_EQ(Core::Logger::entryText(julyWith(microseconds(0)), "x"), "2020-07-31 16:05:09.000000: x");
}

TEST(LoggerEntry, IsTheSameUnderALocaleWithDigitGroups) {
    setTimeZone("UTC");
    const Support::CommaLocale locale;
    EXPECT_EQ(Core::Logger::entryText(julyWith(microseconds(123456)), "x"), "2020-07-31 14:05:09.123456: x");
}

TEST(LoggerEntry, KeepsTheMessageUnchanged) {
    setTimeZone("UTC");
    EXPECT_EQ(Core::Logger::entryText(julyWith(microseconds(0)), "Brief.\nA: \"b\"\n"),
              "2020-07-31 14:05:09.000000: Brief.\nA: \"b\"\n");
}

TEST_F(Logger, DoesNotTouchTheFileBeforeItLogs) {
    const Core::Logger logger(path);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(Logger, AppendsEntriesInCallOrderEachWithItsOwnTimeStamp) {
    folder.write("x.log", "earlier\n");
    const Core::Logger logger(path);
    logger.log("first");
    logger.log("second");
    EXPECT_THAT(textOfFile(path),
                MatchesRegex(std::string("earlier\n") + stampPattern + "first\n" + stampPattern + "second\n"));
}

TEST_F(Logger, FollowsAMessageThatEndsInALineFeedByAnEmptyLine) {
    Core::Logger(path).log("Brief.\n");
    EXPECT_THAT(textOfFile(path), MatchesRegex(std::string(stampPattern) + "Brief.\n\n"));
}

TEST_F(Logger, WritesALineOfTheTimeStampForAnEmptyMessage) {
    Core::Logger(path).log("");
    EXPECT_THAT(textOfFile(path), MatchesRegex(std::string(stampPattern) + "\n"));
}

TEST_F(Logger, StampsWithTheCurrentTime) {
    setTimeZone("UTC");
    const std::string before = Core::Logger::entryText(system_clock::now(), "x\n");
    Core::Logger(path).log("x");
    const std::string after = Core::Logger::entryText(system_clock::now(), "x\n");
    const std::string logged = textOfFile(path);
    EXPECT_LE(before, logged);
    EXPECT_LE(logged, after);
}

TEST_F(Logger, DoesNothingWhenTheFolderIsMissing) {
    EXPECT_NO_THROW(Core::Logger(folder.path("missing/x.log")).log("message"));
    EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
}

TEST_F(Logger, KeepsEntriesOfSeveralThreadsWhole) {
    constexpr std::size_t threadCount = 4;
    constexpr std::size_t entryCount = 100;
    const std::string message(300, 'x');
    const Core::Logger logger(path);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < threadCount; ++i) {
        threads.emplace_back([&] {
            for (std::size_t j = 0; j < entryCount; ++j) logger.log(message);
        });
    }
    for (std::thread& thread : threads) thread.join();

    constexpr std::size_t stampLength = 28;
    std::istringstream lines(textOfFile(path));
    std::size_t wholeLines = 0;
    for (std::string line; std::getline(lines, line);) wholeLines += line.size() == stampLength + message.size();
    EXPECT_EQ(wholeLines, threadCount * entryCount);
}
