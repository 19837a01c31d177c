#pragma once

#include <sys/types.h>

#include <mutex>

#include "Image/Sandbox/CodecProcess.h"

namespace HostImage {

/// Starts decoder processes quickly. It is this program in another process, which loads the decoding libraries and
/// opens no file: each decoder is a fork of it at that point (a few milliseconds) instead of a program started from
/// scratch (a few tenths of a second). A decoder serves one frame, like one that is started on its own.
///
/// The server starts with the first decoder, is restarted if something ends it, and ends with this process, as does
/// every decoder that is left. Any thread.
class CodecServer {
public:
    /// Made on first use and never destroyed.
    static CodecServer& instance();

    /// Starts a process that decodes as ordered, and writes its answer to `answer` and its pixels to `pixels`. It is a
    /// child of this process, to be waited for. -1 if that fails.
    pid_t start(const CodecProcess& order, int answer, int pixels);

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

} // namespace HostImage
