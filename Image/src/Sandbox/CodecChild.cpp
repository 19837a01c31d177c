#include "Sandbox/CodecChild.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include "ImageError.h"
#include "Sandbox/CodecServer.h"

namespace Image {

namespace {

constexpr std::size_t maxProblemBytes = 4096;
constexpr const char* thisProgram = "/proc/self/exe";
constexpr const char* otherFormat = "; write this frame in another format, such as EXR";

} // namespace

CodecChild::CodecChild(const CodecProcess& order, const std::string& program, int pixels, int file)
    : m_order(order), m_deadline(Clock::now() + std::chrono::seconds(order.sandbox.seconds)) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) failToStart(errno);
    m_output = ends[0];
    // Of no use to it, and no harm.
    if (pixels < 0) pixels = m_output;
    if (file < 0) file = m_output;
    if (program == thisProgram) m_process = CodecServer::instance().start(order, ends[1], pixels, file);
    int error = 0;
    if (m_process <= 0) error = startOther(program, ends[1], pixels, file);
    ::close(ends[1]);
    if (error == 0) return;
    ::close(m_output);
    failToStart(error);
}

int CodecChild::startOther(const std::string& program, int answer, int pixels, int file) {
    // Out of the way of the places that are taken before its own.
    const int movedFile = ::fcntl(file, F_DUPFD_CLOEXEC, CodecProcess::fileDescriptor + 1);
    if (movedFile < 0) return errno;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, answer, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, pixels, CodecProcess::pixelsDescriptor);
    posix_spawn_file_actions_adddup2(&actions, movedFile, CodecProcess::fileDescriptor);
    posix_spawn_file_actions_addclosefrom_np(&actions, CodecProcess::fileDescriptor + 1);
    std::vector<std::string> arguments = m_order.arguments();
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const int error = ::posix_spawn(&m_process, program.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(movedFile);
    return error;
}

CodecChild::~CodecChild() {
    ::close(m_output);
    if (m_process <= 0) return;
    ::kill(m_process, SIGKILL);
    while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) continue;
}

std::string CodecChild::answer(CodecProcess::Reply kind, std::uint64_t maxBytes) {
    using Reply = CodecProcess::Reply;
    std::uint64_t head[2] = {0, 0};
    read(head, sizeof head);
    const bool isUnsupported = head[0] == static_cast<std::uint64_t>(Reply::Unsupported);
    const bool isProblem = head[0] == static_cast<std::uint64_t>(Reply::Problem) || isUnsupported;
    if (!(head[0] == static_cast<std::uint64_t>(kind) && head[1] <= maxBytes) &&
        !(isProblem && head[1] <= maxProblemBytes))
        failForAnswer();
    std::string bytes(static_cast<std::size_t>(head[1]), '\0');
    read(bytes.data(), bytes.size());
    if (isUnsupported) throw UnsupportedImage(m_order.path, shownProblem(bytes));
    if (isProblem) fail(shownProblem(bytes));
    return bytes;
}

void CodecChild::finish() {
    char more = 0;
    if (readSome(&more, 1) != 0) failForAnswer();
    const int status = exitStatus();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) failForStatus(status);
}

void CodecChild::fail(const std::string& problem) const { throw ImageError(m_order.path, problem); }

void CodecChild::failToStart(int error) const {
    fail(std::string("the sandbox could not be started: ") + std::strerror(error));
}

void CodecChild::failForTime() const {
    const std::string time =
        "took longer than the sandbox's limit of " + std::to_string(m_order.sandbox.seconds) + " s";
    if (isEncoder()) fail("cannot be written: encoding " + time + "; raise it with --sandbox-time");
    fail("decoding " + time + "; the file is damaged or malicious, or needs a larger --sandbox-time");
}

void CodecChild::failForAnswer() const {
    if (isEncoder())
        fail(std::string("cannot be written: the sandboxed encoder returned something that is not a result") +
             otherFormat);
    fail("the sandboxed decoder returned something that is not a frame; the file is damaged or malicious");
}

void CodecChild::failForStatus(int status) const {
    if (!WIFSIGNALED(status)) {
        const std::string text = "exited without a result (status " + std::to_string(WEXITSTATUS(status)) + ")";
        if (isEncoder()) fail("cannot be written: the sandboxed encoder " + text + "; raise --sandbox-memory");
        fail("the sandboxed decoder " + text +
             "; the file is damaged or malicious, or needs a larger --sandbox-memory");
    }
    const int signal = WTERMSIG(status);
    if (signal == SIGXCPU) failForTime();
    const std::string text = "was killed by signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
    if (isEncoder()) fail("cannot be written: the sandboxed encoder " + text + otherFormat);
    fail("the sandboxed decoder " + text + "; the file is damaged or malicious, copy or render it again");
}

/// Exactly n bytes.
void CodecChild::read(void* bytes, std::size_t n) {
    std::uint8_t* to = static_cast<std::uint8_t*>(bytes);
    while (n > 0) {
        const std::size_t count = readSome(to, n);
        if (count == 0) failForStatus(exitStatus());
        to += count;
        n -= count;
    }
}

/// Some of the next n bytes; 0 at the end.
std::size_t CodecChild::readSome(void* bytes, std::size_t n) {
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now()).count();
        pollfd waiting{m_output, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(std::clamp<std::int64_t>(left, 0, 1 << 20)));
        // A program that was stopped for a while finds the answer late, but there.
        if (ready <= 0 && left <= 0) failForTime();
        if (ready <= 0) continue;
        const ssize_t count = ::read(m_output, bytes, n);
        if (count < 0 && errno == EINTR) continue;
        return count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

/// Of the process, whose answer has ended.
int CodecChild::exitStatus() {
    int status = 0;
    while (::waitpid(m_process, &status, WNOHANG) == 0) {
        // It closed its output and lives on.
        if (Clock::now() > m_deadline) failForTime();
        ::poll(nullptr, 0, 1);
    }
    m_process = -1;
    return status;
}

/// One line to be shown, whatever the bytes are.
std::string CodecChild::shownProblem(std::string text) const {
    for (char& letter : text)
        if (static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f) letter = '?';
    if (text.find("memory") != std::string::npos)
        text += " (the sandbox's limit is " + std::to_string(m_order.sandbox.memory >> 20) +
                " MiB; raise it with --sandbox-memory)";
    return text;
}

} // namespace Image
