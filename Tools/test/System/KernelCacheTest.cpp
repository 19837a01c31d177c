#include "System/KernelCache.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

#include "Support/EnvironmentVariable.h"
#include "Support/TemporaryFolder.h"

using Tools::KernelCache;

namespace {

std::string usualFolder(const std::map<std::string, std::string>& variables) {
    return KernelCache::usualFolder([&](const char* name) {
        const auto variable = variables.find(name);
        return variable == variables.end() ? nullptr : variable->second.c_str();
    });
}

} // namespace

TEST(KernelCache, LiesWhereTheDriverLooks) {
    EXPECT_EQ(usualFolder({{"POCL_CACHE_DIR", "/p"}, {"XDG_CACHE_HOME", "/x"}, {"HOME", "/h"}}), "/p");
    EXPECT_EQ(usualFolder({{"XDG_CACHE_HOME", "/x"}, {"HOME", "/h"}}), "/x/pocl/kcache");
    EXPECT_EQ(usualFolder({{"HOME", "/h"}}), "/h/.cache/pocl/kcache");
    EXPECT_EQ(usualFolder({}), "/tmp/pocl");
}

TEST(KernelCache, IsTheUsualOneWhereItCanBeWritten) {
    Support::TemporaryFolder folder;
    const EnvironmentVariable cacheFolder("POCL_CACHE_DIR", std::nullopt);
    const EnvironmentVariable cacheHome("XDG_CACHE_HOME", folder.path());
    const KernelCache cache;
    EXPECT_EQ(cache.folder(), folder.path("pocl/kcache"));
    EXPECT_FALSE(cache.isPrivate());
    EXPECT_EQ(cache.notice(), "");
    EXPECT_EQ(std::getenv("POCL_CACHE_DIR"), nullptr);
}

TEST(KernelCache, IsAPrivateOneElsewhereThatDisappears) {
    Support::TemporaryFolder folder;
    const EnvironmentVariable cacheFolder("POCL_CACHE_DIR", std::nullopt);
    const EnvironmentVariable cacheHome("XDG_CACHE_HOME", folder.write("file"));
    const EnvironmentVariable temporary("TMPDIR", folder.path());
    std::string privateFolder;
    {
        const KernelCache cache;
        privateFolder = cache.folder();
        EXPECT_TRUE(cache.isPrivate());
        EXPECT_TRUE(std::filesystem::is_directory(privateFolder));
        EXPECT_EQ(std::getenv("POCL_CACHE_DIR"), privateFolder);
        EXPECT_EQ(cache.notice(),
                  "Kernel cache \"" + folder.path("file/pocl/kcache") +
                      "\" is not usable: Not a directory. This run uses a private one and takes longer to start.");
    }
    EXPECT_FALSE(std::filesystem::exists(privateFolder));
}

TEST(KernelCache, LeavesAFolderThatTheUserNamed) {
    Support::TemporaryFolder folder;
    const std::string named = folder.write("file") + "/cache";
    const EnvironmentVariable cacheFolder("POCL_CACHE_DIR", named);
    const KernelCache cache;
    EXPECT_EQ(cache.folder(), named);
    EXPECT_EQ(cache.notice(), "Kernel cache \"" + named +
                                  "\" is not usable: Not a directory. Set POCL_CACHE_DIR to a writable folder.");
}

TEST(KernelCache, LeavesNoTraceOfTheTrial) {
    Support::TemporaryFolder folder;
    EXPECT_EQ(KernelCache::problemOf(folder.path()), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}
