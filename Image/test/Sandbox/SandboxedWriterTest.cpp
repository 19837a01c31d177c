#include "Sandbox/SandboxedWriter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "ImageError.h"
#include "Support/NoiseFrame.h"
#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

using namespace Image;

namespace {

class SandboxedWriter : public testing::Test {
protected:
    /// What is said when the process runs these shell commands instead of encoding; the file's path goes missing.
    std::string complaint(const std::string& commands, unsigned seconds = 60) {
        const std::string program = folder.path("program");
        writeBytes(program, "#!/bin/sh\n" + commands + "\n");
        ::chmod(program.c_str(), 0700);
        try {
            writeFrameSandboxed(path, frame, {}, {std::uint64_t{1} << 30, seconds}, program);
        } catch (const ImageError& error) {
            const std::string text = error.what();
            EXPECT_TRUE(text.starts_with(path + ": ")) << text;
            return text.substr(text.find(": ") + 2);
        }
        return "(none)";
    }

    Support::TemporaryFolder folder;
    const std::string path = folder.path("a.tif");
    const Frame frame = noiseFrame({0, 0, 31, 20}, rgba(PixelType::UInt16));
};

} // namespace

TEST_F(SandboxedWriter, WritesTheSameBytes) {
    std::vector<Channel> channels = rgba(PixelType::Half);
    std::erase_if(channels, [](const Channel& channel) { return channel.name == "A"; });
    const Frame planes = noiseFrame({0, 0, 30, 20}, channels);
    for (const std::string extension : {"tif", "dpx", "png", "jpg", "exr"}) {
        SCOPED_TRACE(extension);
        writeFrame(folder.path("plain.") + extension, planes, {.threads = 2});
        writeFrameSandboxed(folder.path("guarded.") + extension, planes, {.threads = 2}, {}, ORVEX_PROGRAM);
        EXPECT_EQ(readBytes(folder.path("guarded.") + extension), readBytes(folder.path("plain.") + extension));
    }
}

TEST_F(SandboxedWriter, PassesTheOptionsOn) {
    const WriteOptions options{.compression = "none", .pixelType = PixelType::Float};
    writeFrame(folder.path("plain.tif"), frame, options);
    writeFrameSandboxed(path, frame, options, {}, ORVEX_PROGRAM);
    EXPECT_EQ(readBytes(path), readBytes(folder.path("plain.tif")));
}

TEST_F(SandboxedWriter, MakesNoFileAfterTheDeathOfItsProcess) {
    EXPECT_EQ(complaint("kill -SEGV $$"),
              "cannot be written: the sandboxed encoder was killed by signal 11 (Segmentation fault); write this frame "
              "in another format, such as EXR");
    EXPECT_FALSE(std::filesystem::exists(path));
    // The whole answer has come.
    EXPECT_EQ(complaint("printf '\\004\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0'; kill -KILL $$"),
              "cannot be written: the sandboxed encoder was killed by signal 9 (Killed); write this frame in another "
              "format, such as EXR");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(SandboxedWriter, EndsAProcessThatHangs) {
    EXPECT_EQ(complaint("exec sleep 30", 1),
              "cannot be written: encoding took longer than the sandbox's limit of 1 s; raise it with --sandbox-time");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(SandboxedWriter, TellsAProcessThatGivesUp) {
    EXPECT_EQ(complaint("exit 3"),
              "cannot be written: the sandboxed encoder exited without a result (status 3); raise --sandbox-memory");
}

TEST_F(SandboxedWriter, RefusesWhatIsNoAnswer) {
    EXPECT_EQ(complaint("exec cat /dev/zero"),
              "cannot be written: the sandboxed encoder returned something that is not a result; write this frame in "
              "another format, such as EXR");
}
