#pragma once

#include <sys/types.h>

#include <mutex>

#include "Sandbox/CodecProcess.h"

namespace Image {

/// Starts decoder and encoder processes quickly. It is this program in another process, which loads the libraries they
/// need and opens no file: each CodecProcess is a fork of it at that point (a few milliseconds) instead of a program
/// started from scratch (a few tenths of a second). A fork serves one frame, like one that is started on its own.
///
/// The server starts with the first of them, is restarted if something ends it, and ends with this process, as does
/// every fork that is left. Any thread.
class CodecServer {
public:
    /// Made on first use and never destroyed.
    static CodecServer& instance();

    /// Starts a process that does as ordered, writes its answer to `answer`, and has `pixels` and `file` as its
    /// pixelsDescriptor and fileDescriptor. It is a child of this process, to be waited for. -1 if that fails, or if
    /// another thread of the server never rests.
    pid_t start(const CodecProcess& order, int answer, int pixels, int file);

    /// Whether a command line is the server's.
    static bool isMeant(int argumentCount, const char* const* arguments);
    /// What the server does. Call it before anything else in main; it never returns.
    [[noreturn]] static void run();

private:
    CodecServer() = default;
    bool launch();
    void drop();

    std::mutex m_access;
    int m_socket = -1;
    pid_t m_process = -1;
};

} // namespace Image
