#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "Sandbox/CodecProcess.h"

namespace Image {

/// The caller's side of a CodecProcess: the process, and the pipe that brings its answer. Errors are ImageErrors that
/// name the order's path, also when the process is ended by a signal, exceeds its time, or sends an answer that is not
/// of the protocol. The destructor ends the process. One thread.
class CodecChild {
public:
    /// Starts the process: a copy of the CodecServer's; where that fails, or `program` is not "/proc/self/exe", that
    /// program, whose main function begins with CodecProcess. `pixels` and `file` become the process's
    /// pixelsDescriptor and fileDescriptor; it inherits no other descriptor. The order must outlive the child.
    CodecChild(const CodecProcess& order, const std::string& program, int pixels = -1, int file = -1);
    ~CodecChild();
    CodecChild(const CodecChild&) = delete;
    CodecChild& operator=(const CodecChild&) = delete;

    /// The answer's content, which must be of that kind and have no more bytes. A problem that the process reports is
    /// thrown, as UnsupportedImage if the process says so.
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
