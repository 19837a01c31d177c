#include "Image/Sandbox/SandboxedReader.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <new>
#include <vector>

#include "Image/ImageError.h"
#include "Image/Sandbox/CodecProcess.h"
#include "Image/Sandbox/CodecServer.h"
#include "Image/Sandbox/FrameMessage.h"

namespace HostImage {

namespace {

using Clock = std::chrono::steady_clock;
using Reply = CodecProcess::Reply;

constexpr std::size_t maxProblemBytes = 4096;
constexpr const char* thisProgram = "/proc/self/exe";
/// The shared memory's size: more than any frame has, and taken only where something is written.
constexpr off_t sharedBytes = off_t{1} << 45;

/// Memory that the other process writes to. Its size is sealed, so that nobody makes it shorter while it is read.
class SharedPixels {
public:
    SharedPixels() : m_descriptor(::memfd_create("lenscorrect", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
        if (m_descriptor < 0) throw std::bad_alloc();
        if (::ftruncate(m_descriptor, sharedBytes) == 0 &&
            ::fcntl(m_descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0)
            return;
        ::close(m_descriptor);
        throw std::bad_alloc();
    }
    ~SharedPixels() { ::close(m_descriptor); }
    SharedPixels(const SharedPixels&) = delete;
    SharedPixels& operator=(const SharedPixels&) = delete;

    int descriptor() const { return m_descriptor; }

    /// Copies the planes' pixels out. Throws std::bad_alloc.
    void copyTo(Frame& frame) const {
        const std::vector<std::uint64_t> offsets = sharedOffsets(frame);
        if (offsets.back() == 0) return;
        void* const memory = ::mmap(nullptr, offsets.back(), PROT_READ, MAP_SHARED | MAP_POPULATE, m_descriptor, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        std::size_t index = 0;
        for (Part& part : frame.parts)
            for (Plane& plane : part.planes)
                std::memcpy(plane.pixels.data(), static_cast<const std::uint8_t*>(memory) + offsets[index++],
                            plane.pixels.size());
        ::munmap(memory, offsets.back());
    }

private:
    int m_descriptor;
};

/// The other process and the pipe out of it. Ends it when it goes.
class Child {
public:
    Child(const CodecProcess& order, const std::string& program, int pixels)
        : m_order(order), m_deadline(Clock::now() + std::chrono::seconds(order.sandbox.seconds)) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) failToStart(errno);
        m_output = ends[0];
        if (program == thisProgram) {
            m_process = CodecServer::instance().start(order, ends[1], pixels);
            if (m_process > 0) {
                ::close(ends[1]);
                return;
            }
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, pixels, CodecProcess::pixelsDescriptor);
        posix_spawn_file_actions_addclosefrom_np(&actions, CodecProcess::pixelsDescriptor + 1);
        std::vector<std::string> arguments = order.arguments();
        std::vector<char*> pointers;
        for (std::string& argument : arguments) pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        const int error = ::posix_spawn(&m_process, program.c_str(), &actions, nullptr, pointers.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
        if (error == 0) return;
        ::close(m_output);
        failToStart(error);
    }
    ~Child() {
        ::close(m_output);
        if (m_process > 0) end();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Waits for the answer's end. A process that dies only now may have left pixels half done.
    void finish() {
        char more = 0;
        if (readSome(&more, 1) != 0) failForAnswer();
        const int status = exitStatus();
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) failForStatus(status);
    }

    /// Exactly n bytes.
    void read(void* bytes, std::size_t n) {
        std::uint8_t* to = static_cast<std::uint8_t*>(bytes);
        while (n > 0) {
            const std::size_t count = readSome(to, n);
            if (count == 0) failForStatus(exitStatus());
            to += count;
            n -= count;
        }
    }

    [[noreturn]] void failForAnswer() const {
        fail("the sandboxed decoder returned something that is not a frame; the file is damaged or malicious");
    }
    [[noreturn]] void fail(const std::string& problem) const { throw ImageError(m_order.path, problem); }

private:
    [[noreturn]] void failToStart(int error) const {
        fail(std::string("the sandbox could not be started: ") + std::strerror(error));
    }
    [[noreturn]] void failForTime() const {
        fail("decoding took longer than the sandbox's limit of " + std::to_string(m_order.sandbox.seconds) +
             " s; the file is damaged or malicious, or needs a larger --sandbox-time");
    }
    /// Some of the next n bytes; 0 at the end.
    std::size_t readSome(void* bytes, std::size_t n) {
        for (;;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now()).count();
            if (left <= 0) failForTime();
            pollfd waiting{m_output, POLLIN, 0};
            const int ready = ::poll(&waiting, 1, static_cast<int>(std::min<std::int64_t>(left, 1 << 20)));
            if (ready <= 0) continue;
            const ssize_t count = ::read(m_output, bytes, n);
            if (count < 0 && errno == EINTR) continue;
            return count < 0 ? 0 : static_cast<std::size_t>(count);
        }
    }
    /// Of the process, whose answer has ended.
    int exitStatus() {
        int status = 0;
        while (::waitpid(m_process, &status, WNOHANG) == 0) {
            // It closed its output and lives on.
            if (Clock::now() > m_deadline) failForTime();
            ::poll(nullptr, 0, 1);
        }
        m_process = -1;
        return status;
    }
    [[noreturn]] void failForStatus(int status) const {
        if (!WIFSIGNALED(status))
            fail("the sandboxed decoder exited without a result (status " + std::to_string(WEXITSTATUS(status)) +
                 "); the file is damaged or malicious, or needs a larger --sandbox-memory");
        const int signal = WTERMSIG(status);
        if (signal == SIGXCPU) failForTime();
        fail("the sandboxed decoder was killed by signal " + std::to_string(signal) + " (" + ::strsignal(signal) +
             "); the file is damaged or malicious, copy or render it again");
    }
    void end() {
        ::kill(m_process, SIGKILL);
        while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }

    const CodecProcess& m_order;
    Clock::time_point m_deadline;
    pid_t m_process = -1;
    int m_output = -1;
};

/// One line to be shown, whatever the bytes are.
std::string shownProblem(std::string text, const SandboxLimits& sandbox) {
    for (char& letter : text)
        if (static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f) letter = '?';
    if (text.find("memory") != std::string::npos)
        text += " (the sandbox's limit is " + std::to_string(sandbox.memory >> 20) +
                " MiB; raise it with --sandbox-memory)";
    return text;
}

FrameMessage readMessage(Child& child, const CodecProcess& order) {
    std::uint64_t head[2] = {0, 0};
    child.read(head, sizeof head);
    const bool isFrame = head[0] == static_cast<std::uint64_t>(Reply::Frame);
    const bool isUnsupported = head[0] == static_cast<std::uint64_t>(Reply::Unsupported);
    const bool isProblem = head[0] == static_cast<std::uint64_t>(Reply::Problem) || isUnsupported;
    if (!(isFrame && head[1] <= FrameMessage::maxBytes) && !(isProblem && head[1] <= maxProblemBytes))
        child.failForAnswer();
    std::string bytes(static_cast<std::size_t>(head[1]), '\0');
    child.read(bytes.data(), bytes.size());
    if (isUnsupported) throw UnsupportedImage(order.path, shownProblem(bytes, order.sandbox));
    if (isProblem) child.fail(shownProblem(bytes, order.sandbox));
    try {
        return FrameMessage::parse(bytes, order.limits);
    } catch (const FrameMessageError& error) {
        child.fail(std::string("the sandboxed decoder returned something that is not a frame (") + error.what() +
                   "); the file is damaged or malicious");
    }
}

} // namespace

SandboxedReader::SandboxedReader(const std::string& path, const Limits& limits, const SandboxLimits& sandbox,
                                 const std::string& program)
    : m_path(path), m_limits(limits), m_sandbox(sandbox), m_program(program) {}

FrameMessage SandboxedReader::headerMessage(std::int64_t index) const {
    const CodecProcess order{m_path, m_limits, m_sandbox, false, 1, index};
    Child child(order, m_program, STDERR_FILENO);
    return readMessage(child, order);
}

std::int64_t SandboxedReader::frameCount() const { return headerMessage(0).frameCount; }

Frame SandboxedReader::readHeader(std::int64_t index) { return headerMessage(index).frame; }

void SandboxedReader::readPixels(Frame& frame, unsigned threads, std::int64_t index) {
    const CodecProcess order{m_path, m_limits, m_sandbox, true, std::max(threads, 1u), index};
    try {
        const SharedPixels pixels;
        Child child(order, m_program, pixels.descriptor());
        frame.assignHeader(readMessage(child, order).frame);
        child.finish();
        for (Part& part : frame.parts) part.allocatePixels();
        pixels.copyTo(frame);
    } catch (const std::bad_alloc&) {
        throw ImageError(m_path, "not enough memory for its pixels");
    }
}

} // namespace HostImage
