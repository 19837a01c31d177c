#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

namespace Support {

/// Runs the operation as a user whom file permissions bind, and returns its text. The superuser, for whom an unreadable
/// file is readable, does so in a child process under another user's id.
inline std::string asOrdinaryUser(const std::function<std::string()>& operation) {
    if (geteuid() != 0) return operation();
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        const bool isOrdinary = setgid(nobody) == 0 && setuid(nobody) == 0;
        const std::string result = isOrdinary ? operation() : "cannot become an ordinary user";
        const ssize_t written = ::write(pipeEnds[1], result.data(), result.size());
        _exit(written == static_cast<ssize_t>(result.size()) ? 0 : 1);
    }
    close(pipeEnds[1]);
    std::string result;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(pipeEnds[0], buffer, sizeof buffer)) > 0;) {
        result.append(buffer, static_cast<std::size_t>(count));
    }
    close(pipeEnds[0]);
    waitpid(child, nullptr, 0);
    return result;
}

} // namespace Support
