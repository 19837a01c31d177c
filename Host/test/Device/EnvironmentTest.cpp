#include "Device/Environment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <thread>

#include "Support/EnvironmentVariable.h"

namespace {

std::string workGroupSizeFor(const std::optional<std::string>& threads) {
    const EnvironmentVariable count("POCL_MAX_PTHREAD_COUNT", threads);
    const EnvironmentVariable size("POCL_MAX_WORK_GROUP_SIZE", std::nullopt);
    Host::prepareForRendering();
    return std::getenv("POCL_MAX_WORK_GROUP_SIZE");
}

} // namespace

TEST(Environment, GivesTheCpuDriverSmallerGroupsTheMoreThreadsShareThem) {
    EXPECT_EQ(workGroupSizeFor("1"), "1024");
    EXPECT_EQ(workGroupSizeFor("2"), "768");
    EXPECT_EQ(workGroupSizeFor("3"), "512");
    EXPECT_EQ(workGroupSizeFor("5"), "288");
    EXPECT_EQ(workGroupSizeFor("16"), "96");
    EXPECT_EQ(workGroupSizeFor("128"), "64");
    EXPECT_EQ(workGroupSizeFor("100000"), "64");
}

TEST(Environment, CountsTheCoresWhereNobodySaysTheThreads) {
    const std::string everyCore = workGroupSizeFor(std::nullopt);
    EXPECT_EQ(workGroupSizeFor(std::to_string(std::thread::hardware_concurrency())), everyCore);
    EXPECT_EQ(workGroupSizeFor("0"), everyCore);
    EXPECT_EQ(workGroupSizeFor("-3"), everyCore);
    EXPECT_EQ(workGroupSizeFor("many"), everyCore);
}

TEST(Environment, LeavesTheUsersGroupSize) {
    const EnvironmentVariable size("POCL_MAX_WORK_GROUP_SIZE", "128");
    Host::prepareForRendering();
    EXPECT_STREQ(std::getenv("POCL_MAX_WORK_GROUP_SIZE"), "128");
}
