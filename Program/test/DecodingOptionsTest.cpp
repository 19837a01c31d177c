#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "Options.h"
#include "Support/FailureText.h"

using Program::DecodingOptionsReader;
using Tools::DecodingOptions;

namespace {

DecodingOptions options(const std::string& text) {
    CLI::App app;
    DecodingOptionsReader reader;
    reader.declareOptions(app);
    app.parse(text);
    return reader.read();
}

std::string failure(const std::string& text) {
    return failureOf([&] { options(text); });
}

} // namespace

TEST(DecodingOptions, TrustFilesOfUpToTheReadersOwnLimitsByDefault) {
    const DecodingOptions read = options("");
    EXPECT_EQ(read.limits.maxSide, 65536);
    EXPECT_EQ(read.limits.maxPixels, std::int64_t{65536} * 8192);
    EXPECT_EQ(read.limits.maxBytes, Image::Limits().maxBytes);
}

TEST(DecodingOptions, ReadTheLargestImageAsSideAndPixels) {
    const DecodingOptions smaller = options("--max-image 1920x1080");
    EXPECT_EQ(smaller.limits.maxSide, 1920);
    EXPECT_EQ(smaller.limits.maxPixels, 1920 * 1080);
    const DecodingOptions larger = options("--max-image 100000x200000");
    EXPECT_EQ(larger.limits.maxSide, 200000);
    EXPECT_EQ(larger.limits.maxBytes, std::int64_t{200000} * 100000 * 32) << "the pixels must find room too";
}

TEST(DecodingOptions, RefuseALargestImageThatIsNoSize) {
    for (const char* const text : {"0x5", "5x0", "5", "5x", "x5", "5x5x5", "1e3x5", "16777217x1", "-5x5", "5X5"})
        EXPECT_EQ(failure(std::string("--max-image=") + text),
                  std::string("wrong use: --max-image ") + text +
                      " is not a size such as 65536x8192, each side 1 to 16777216.");
}

TEST(DecodingOptions, GiveTheSandboxItsLimits) {
    const DecodingOptions usual = options("--sandbox");
    EXPECT_EQ(usual.sandboxLimits.memory, std::uint64_t{8} << 30);
    EXPECT_EQ(usual.sandboxLimits.seconds, 60u);
    for (const std::string which : {"", "--sandbox"}) {
        const DecodingOptions given = options(which + " --sandbox-memory 512M --sandbox-time 5");
        EXPECT_EQ(given.sandboxLimits.memory, std::uint64_t{512} << 20);
        EXPECT_EQ(given.sandboxLimits.seconds, 5u);
    }
}

TEST(DecodingOptions, SayWhichFilesAreDecodedInTheSandbox) {
    using Sandbox = DecodingOptions::Sandbox;
    EXPECT_EQ(options("").sandbox, Sandbox::Auto);
    EXPECT_EQ(options("--sandbox=auto").sandbox, Sandbox::Auto);
    EXPECT_EQ(options("--sandbox").sandbox, Sandbox::On);
    EXPECT_EQ(options("--sandbox=on").sandbox, Sandbox::On);
    EXPECT_EQ(options("--sandbox=off").sandbox, Sandbox::Off);
    EXPECT_THROW(options("--sandbox=no"), CLI::ParseError);
}

TEST(DecodingOptions, PutAllButExrFilesIntoTheSandboxByDefault) {
    const auto isSandboxed = [](const std::string& arguments, const std::string& path) {
        // Only a sandboxed reader opens nothing before it is asked.
        try {
            options(arguments).openReader(path);
            return true;
        } catch (const Image::ImageError&) {
            return false;
        }
    };
    for (const char* const path : {"none/a.dpx", "none/a.TIF", "none/a.mov", "none/a"}) {
        EXPECT_TRUE(isSandboxed("", path)) << path;
        EXPECT_FALSE(isSandboxed("--sandbox=off", path)) << path;
    }
    EXPECT_FALSE(isSandboxed("", "none/a.exr"));
    EXPECT_TRUE(isSandboxed("--sandbox", "none/a.exr"));
}

TEST(DecodingOptions, RefuseASandboxInWhichNothingStarts) {
    EXPECT_EQ(failure("--sandbox --sandbox-memory 255M"), "wrong use: --sandbox-memory 255M is less than 256M.");
}

TEST(DecodingOptions, RefuseTheSandboxesLimitsWithoutIt) {
    const std::string text = "wrong use: --sandbox-memory and --sandbox-time cannot be combined with --sandbox=off.";
    EXPECT_EQ(failure("--sandbox=off --sandbox-memory 512M"), text);
    EXPECT_EQ(failure("--sandbox=off --sandbox-time 5"), text);
}
