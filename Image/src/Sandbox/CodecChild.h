#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "Sandbox/CodecProcess.h"

namespace Image {

/// A CodecProcess and the pipe out of it, seen by the one who asks. Its errors are ImageErrors that name the order's
/// path: also when the process was ended by a signal, took longer than it may, or answered what it never says. Ends the
/// process when it goes. One thread.
class CodecChild {
public:
    /// Starts the process: a copy of the CodecServer's; where that fails, or `program` is not "/proc/self/exe", that
    /// program, whose main function begins with CodecProcess. `pixels` and `file`: what becomes the process's
    /// pixelsDescriptor and fileDescriptor; without them it gets nothing of this process's. The order outlives the
    /// child.
    CodecChild(const CodecProcess& order, const std::string& program, int pixels = -1, int file = -1);
    ~CodecChild();
    CodecChild(const CodecChild&) = delete;
    CodecChild& operator=(const CodecChild&) = delete;

    /// What the answer says, which is to be of that kind and no longer. A problem that the process tells is thrown, as
    /// UnsupportedImage where it is one.
    std::string answer(CodecProcess::Reply kind, std::uint64_t maxBytes);
    /// Waits for the process's end: one that dies only now may have left its work half done.
    void finish();
    [[noreturn]] void fail(const std::string& problem) const;

private:
    using Clock = std::chrono::steady_clock;

    [[noreturn]] void failToStart(int error) const;
    [[noreturn]] void failForTime() const;
    [[noreturn]] void failForAnswer() const;
    [[noreturn]] void failForStatus(int status) const;
    int startOther(const std::string& program, int answer, int pixels, int file);
    void read(void* bytes, std::size_t n);
    std::size_t readSome(void* bytes, std::size_t n);
    int exitStatus();
    std::string shownProblem(std::string text) const;
    bool isEncoder() const { return m_order.task == CodecProcess::Task::Encode; }

    const CodecProcess& m_order;
    Clock::time_point m_deadline;
    pid_t m_process = -1;
    int m_output = -1;
};

} // namespace Image
