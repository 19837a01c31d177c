#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

namespace Support {

/// Runs the operation in a process of its own, which ends in the ordinary way, and answers its text. When that process
/// dies or reports a leak, the text says so.
inline std::string inChildProcess(const std::function<std::string()>& operation) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) return "no pipe";
    std::fflush(nullptr); // or the child writes what is buffered once more
    const pid_t child = fork();
    if (child == 0) {
        close(pipeEnds[0]);
        const std::string text = operation();
        const ssize_t written = ::write(pipeEnds[1], text.data(), text.size());
        close(pipeEnds[1]);
        std::exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    close(pipeEnds[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(pipeEnds[0], buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    close(pipeEnds[0]);
    int status = -1;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) return text + " — died of signal " + std::to_string(WTERMSIG(status));
    if (WEXITSTATUS(status) != 0) return text + " — ended with status " + std::to_string(WEXITSTATUS(status));
    return text;
}

} // namespace Support
