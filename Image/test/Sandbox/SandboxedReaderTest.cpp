#include "Sandbox/SandboxedReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "FrameWriter.h"
#include "ImageError.h"
#include "Sandbox/CodecProcess.h"
#include "Sandbox/FrameMessage.h"
#include "Support/NoiseFrame.h"
#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

using namespace Image;

namespace {

class Sandbox : public testing::Test {
protected:
    /// A reader whose process is the real program.
    SandboxedReader reader(const std::string& path, const SandboxLimits& sandbox = {}, const Limits& limits = {}) {
        return SandboxedReader(path, limits, sandbox, ORVEX_PROGRAM);
    }

    /// What a reader says whose process runs these shell commands instead of decoding; the file's path goes missing.
    std::string complaint(const std::string& commands, unsigned seconds = 60) {
        const std::string program = folder.path("program");
        writeBytes(program, "#!/bin/sh\n" + commands + "\n");
        ::chmod(program.c_str(), 0700);
        return complaintOf([&] {
            Frame frame;
            SandboxedReader("a.exr", {}, {std::uint64_t{1} << 30, seconds}, program).readPixels(frame);
        });
    }

    template <typename Action>
    std::string complaintOf(Action action) {
        try {
            action();
        } catch (const ImageError& error) {
            const std::string text = error.what();
            return text.substr(text.find(": ") + 2);
        }
        return "(none)";
    }

    std::string writtenExr(const std::string& name = "a.exr") {
        const std::string path = folder.path(name);
        writeFrame(path, noiseFrame({-3, -5, 130, 95}, rgba()));
        return path;
    }

    /// A complete answer, with its head, whose frame has no pixels.
    static std::string answer(const std::string& bytes, std::uint64_t kind = 1) {
        const std::uint64_t head[] = {kind, bytes.size()};
        return std::string(reinterpret_cast<const char*>(head), sizeof head) + bytes;
    }

    Support::TemporaryFolder folder;
};

void expectSame(const Frame& got, const Frame& expected) {
    EXPECT_EQ(got.format, expected.format);
    ASSERT_EQ(got.parts.size(), expected.parts.size());
    for (std::size_t i = 0; i < got.parts.size(); ++i) {
        EXPECT_EQ(got.parts[i].attributes, expected.parts[i].attributes);
        EXPECT_EQ(got.parts[i].dataWindow, expected.parts[i].dataWindow);
        EXPECT_EQ(pixelBytes(got.parts[i]), pixelBytes(expected.parts[i]));
    }
}

} // namespace

TEST_F(Sandbox, GivesTheSameFrameForEveryKindOfReader) {
    const std::string movie = folder.path("a.mov");
    outputOf("ffmpeg -v error -f lavfi -i testsrc=size=64x48:rate=25:duration=0.2 -c:v prores_ks " + movie);
    const std::string png = folder.path("a.png");
    writeFrame(png, noiseFrame({0, 0, 31, 20}, rgba(PixelType::UInt16)));
    for (const std::string& path : {writtenExr(), png, movie}) {
        SCOPED_TRACE(path);
        Frame expected, got;
        openReader(path)->readPixels(expected);
        reader(path).readPixels(got, 3);
        expectSame(got, expected);
    }
}

TEST_F(Sandbox, CountsAMoviesFramesAndReadsAnyOfThem) {
    const std::string movie = folder.path("a.mov");
    outputOf("ffmpeg -v error -f lavfi -i testsrc=size=64x48:rate=25:duration=0.2 -c:v prores_ks " + movie);
    EXPECT_EQ(reader(movie).frameCount(), 5);
    Frame expected, got;
    openReader(movie)->readPixels(expected, 1, 3);
    reader(movie).readPixels(got, 1, 3);
    expectSame(got, expected);
}

TEST_F(Sandbox, ReadsAHeaderWithoutPixels) {
    const Frame header = reader(writtenExr()).readHeader();
    ASSERT_EQ(header.parts.size(), 1u);
    EXPECT_EQ(header.parts[0].dataWindow, (Window{-3, -5, 130, 95}));
    EXPECT_EQ(header.parts[0].planes[0].pixels.size(), 0u);
}

TEST_F(Sandbox, UsesMemoryOfAnEarlierFrameAgain) {
    const std::string path = writtenExr();
    Frame frame;
    reader(path).readPixels(frame);
    const std::uint8_t* const pixels = frame.parts[0].planes[0].pixels.data();
    reader(path).readPixels(frame);
    EXPECT_EQ(frame.parts[0].planes[0].pixels.data(), pixels);
}

TEST_F(Sandbox, TellsWhatIsWrongWithAFileInTheReadersOwnWords) {
    const std::string path = writtenExr();
    std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
    Frame frame;
    EXPECT_EQ(complaintOf([&] { reader(path).readPixels(frame); }),
              complaintOf([&] { openReader(path)->readPixels(frame); }));
    EXPECT_EQ(complaintOf([&] { reader(folder.path("none.exr")).readHeader(); }),
              complaintOf([&] { openReader(folder.path("none.exr")); }));
}

TEST_F(Sandbox, HandsTheLimitsOfDeclaredSizesOn) {
    EXPECT_EQ(complaintOf([&] {
                  reader(writtenExr(), {}, {100, 1 << 20, 8, 1 << 30}).readHeader();
              }),
              "the data window of 134 x 101 pixels exceeds the limit of 100 pixels a side");
}

TEST_F(Sandbox, TakesItsProcessTheRightsThatDecodingDoesNotNeed) {
    const std::string path = folder.path("a.exr");
    writeFrame(path, noiseFrame({0, 0, 255, 255}, rgba()));
    const CodecProcess order{path, {}, {std::uint64_t{1} << 30, 60}, CodecProcess::Task::DecodePixels, 2, 0};
    std::vector<std::string> texts = order.arguments();
    std::vector<char*> arguments;
    for (std::string& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    // Full, so that the process waits with its answer and can be looked at.
    ASSERT_EQ(::fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    while (::write(ends[1], texts.data(), 1) == 1) continue;
    ASSERT_EQ(::fcntl(ends[1], F_SETFL, 0), 0);
    const int pixels = ::memfd_create("test", MFD_CLOEXEC);
    ASSERT_EQ(::ftruncate(pixels, 1 << 24), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, pixels, CodecProcess::pixelsDescriptor);
    pid_t process = 0;
    ASSERT_EQ(::posix_spawn(&process, ORVEX_PROGRAM, &actions, nullptr, arguments.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    ::close(pixels);

    std::string filter;
    for (int attempt = 0; attempt < 3000 && filter != "Seccomp:\t2"; ++attempt) {
        ::poll(nullptr, 0, 10);
        std::ifstream status("/proc/" + std::to_string(process) + "/status");
        while (std::getline(status, filter) && !filter.starts_with("Seccomp:")) continue;
    }
    EXPECT_EQ(filter, "Seccomp:\t2");
    const auto limitOf = [process](decltype(RLIMIT_CPU) resource) {
        rlimit limit{};
        EXPECT_EQ(::prlimit(process, resource, nullptr, &limit), 0);
        EXPECT_EQ(limit.rlim_cur, limit.rlim_max);
        return std::uint64_t{limit.rlim_max};
    };
    EXPECT_EQ(limitOf(RLIMIT_CPU), 60u * 2u);
    EXPECT_EQ(limitOf(RLIMIT_FSIZE), 0u);
    EXPECT_EQ(limitOf(RLIMIT_CORE), 0u);
#ifndef ORVEX_SANITIZED
    EXPECT_EQ(limitOf(RLIMIT_AS), std::uint64_t{1} << 30);
#endif

    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    ::close(ends[0]);
}

#ifndef ORVEX_SANITIZED
TEST_F(Sandbox, GrantsNoMoreMemoryThanItsLimit) {
    // 256 MiB of pixels in a small file: within the limits of declared sizes, but beyond the memory.
    const std::string path = folder.path("large.exr");
    Frame frame;
    frame.parts.resize(1);
    Part& part = frame.parts[0];
    part.dataWindow = part.displayWindow = {0, 0, 4095, 4095};
    part.channels = rgba(PixelType::Float);
    part.layOutPlanes();
    part.allocatePixels();
    std::memset(part.planes[0].pixels.data(), 0, part.planes[0].pixels.size());
    WriteOptions options;
    options.compression = "rle";
    writeFrame(path, frame, options);
    EXPECT_EQ(complaintOf([&] {
                  reader(path, {std::uint64_t{256} << 20, 60}).readPixels(frame);
              }),
              "not enough memory for its pixels (the sandbox's limit is 256 MiB; raise it with --sandbox-memory)");
}
#endif

TEST_F(Sandbox, SurvivesTheDeathOfItsProcess) {
    EXPECT_EQ(complaint("kill -SEGV $$"),
              "the sandboxed decoder was killed by signal 11 (Segmentation fault); the "
              "file is damaged or malicious, copy or render it again");
    EXPECT_EQ(complaint("kill -KILL $$"),
              "the sandboxed decoder was killed by signal 9 (Killed); the file is damaged or malicious, copy or render "
              "it again");
}

TEST_F(Sandbox, EndsAProcessThatHangs) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(complaint("exec sleep 30", 1),
              "decoding took longer than the sandbox's limit of 1 s; the file "
              "is damaged or malicious, or needs a larger --sandbox-time");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30)) << "it ended by itself";
}

TEST_F(Sandbox, EndsAProcessThatClosesItsOutputAndHangs) {
    EXPECT_EQ(complaint("exec sleep 30 >&-", 1),
              "decoding took longer than the sandbox's limit of 1 s; the "
              "file is damaged or malicious, or needs a larger --sandbox-time");
}

TEST_F(Sandbox, TellsThatTheProcessorTimeIsUsedUp) {
    EXPECT_EQ(complaint("kill -XCPU $$", 7),
              "decoding took longer than the sandbox's limit of 7 s; the file "
              "is damaged or malicious, or needs a larger --sandbox-time");
}

TEST_F(Sandbox, RefusesAnAnswerThatIsNoFrame) {
    const std::string text =
        "the sandboxed decoder returned something that is not a frame; the file is damaged or malicious";
    EXPECT_EQ(complaint("exec cat /dev/zero"), text);
    EXPECT_EQ(complaint("echo 'Usage: lenscorrect COMMAND'"), text);
    writeBytes(folder.path("answer"), answer(std::string(5000, 'x'), 2));
    EXPECT_EQ(complaint("cat " + (folder.path("answer"))), text);
    const std::uint64_t huge[] = {1, std::uint64_t{1} << 62};
    writeBytes(folder.path("answer"), std::string(reinterpret_cast<const char*>(huge), sizeof huge));
    EXPECT_EQ(complaint("cat " + (folder.path("answer"))), text);
}

TEST_F(Sandbox, RefusesAFrameBeyondTheLimitsBeforeTakingMemory) {
    FrameMessage message{1, noiseFrame({0, 0, 3, 3}, rgba())};
    message.frame.parts[0].dataWindow = {0, 0, 1 << 30, 1 << 30};
    writeBytes(folder.path("answer"), answer(message.bytes()));
    EXPECT_EQ(complaint("cat " + (folder.path("answer"))),
              "the sandboxed decoder returned something that is not a frame (a "
              "window exceeds the limits); the file is damaged or malicious");
}

TEST_F(Sandbox, RefusesAFrameWhoseProcessDoesNotEndInOrder) {
    const FrameMessage message{1, noiseFrame({0, 0, 63, 63}, rgba())};
    writeBytes(folder.path("answer"), answer(message.bytes()));
    EXPECT_EQ(complaint("cat " + (folder.path("answer"))), "(none)");
    EXPECT_EQ(complaint("cat " + (folder.path("answer")) + "; kill -SEGV $$"),
              "the sandboxed decoder was killed by signal 11 (Segmentation fault); the file is damaged or malicious, "
              "copy or render it again");
    EXPECT_EQ(complaint("cat " + (folder.path("answer")) + "; echo more"),
              "the sandboxed decoder returned something that is not a frame; the file is damaged or malicious");
}

TEST_F(Sandbox, CannotMakeTheSharedMemoryShorterWhileItIsRead) {
    const FrameMessage message{1, noiseFrame({0, 0, 63, 63}, rgba())};
    writeBytes(folder.path("answer"), answer(message.bytes()));
    EXPECT_EQ(complaint("python3 -c 'import os; os.ftruncate(3, 0)' 2>/dev/null && kill -SEGV $$; cat " +
                        (folder.path("answer"))),
              "(none)");
}

TEST_F(Sandbox, ShowsAProblemWithoutItsControlCharacters) {
    writeBytes(folder.path("answer"), answer("red \x1b[31mtext\n", 2));
    EXPECT_EQ(complaint("cat " + (folder.path("answer"))), "red ?[31mtext?");
}

TEST_F(Sandbox, SaysThatItsProcessCannotBeStarted) {
    EXPECT_EQ(complaintOf([&] { SandboxedReader("a.exr", {}, {}, folder.path("none")).readHeader(); }),
              "the sandbox could not be started: No such file or directory");
}

TEST_F(Sandbox, LeavesNeitherProcessesNorOpenFilesBehind) {
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    const auto before = openFiles();
    complaint("kill -SEGV $$");
    complaint("exec cat /dev/zero");
    complaint("exec sleep 30", 1);
    reader(writtenExr()).readHeader();
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}
