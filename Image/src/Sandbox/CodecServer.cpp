#include "Sandbox/CodecServer.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "FrameReader.h"

namespace Image {

namespace {

constexpr const char* marker = "--start-codecs-of-single-frames";
/// An order is a path and a dozen numbers.
constexpr std::size_t maxOrderBytes = 65536;
constexpr std::size_t descriptorCount = 3;

/// A message with room for the descriptors.
struct Packet {
    iovec bytes;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(descriptorCount * sizeof(int))> control{};
    msghdr header{};

    Packet(void* data, std::size_t size) : bytes{data, size} {
        header.msg_iov = &bytes;
        header.msg_iovlen = 1;
        header.msg_control = control.data();
        header.msg_controllen = control.size();
    }
};

bool send(int socket, std::string order, const std::array<int, descriptorCount>& descriptors) {
    Packet packet(order.data(), order.size());
    cmsghdr* const head = CMSG_FIRSTHDR(&packet.header);
    head->cmsg_level = SOL_SOCKET;
    head->cmsg_type = SCM_RIGHTS;
    head->cmsg_len = CMSG_LEN(sizeof descriptors);
    std::memcpy(CMSG_DATA(head), descriptors.data(), sizeof descriptors);
    ssize_t count = 0;
    do count = ::sendmsg(socket, &packet.header, MSG_NOSIGNAL);
    while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(order.size());
}

/// The next order; empty once the other side is gone.
std::string receive(int socket, std::array<int, descriptorCount>& descriptors) {
    std::string order(maxOrderBytes, '\0');
    Packet packet(order.data(), order.size());
    ssize_t count = 0;
    do count = ::recvmsg(socket, &packet.header, MSG_CMSG_CLOEXEC);
    while (count < 0 && errno == EINTR);
    const cmsghdr* const head = CMSG_FIRSTHDR(&packet.header);
    if (count <= 0 || head == nullptr || head->cmsg_len != CMSG_LEN(sizeof descriptors)) return {};
    std::memcpy(descriptors.data(), CMSG_DATA(head), sizeof descriptors);
    order.resize(static_cast<std::size_t>(count));
    return order;
}

std::string joined(const std::vector<std::string>& arguments) {
    std::string text;
    for (const std::string& argument : arguments) text.append(argument).push_back('\0');
    return text;
}

/// Whether all threads but the caller's sleep. Some libraries start a pool as they are loaded, which waits for work
/// that never comes; a copy of this process has the caller's thread alone, and would wait for ever for a lock that
/// another one holds at that moment. One that waits for work holds none.
bool othersSleep() {
    const std::string own = std::to_string(::gettid());
    std::error_code error;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task", error)) {
        if (thread.path().filename() == own) continue;
        std::ifstream file(thread.path() / "stat");
        const std::string text((std::istreambuf_iterator<char>(file)), {});
        // The name, in parentheses, may hold anything.
        const std::size_t state = text.rfind(") ");
        if (state != std::string::npos && text.compare(state, 3, ") S") != 0) return false;
    }
    return !error;
}

bool waitForOthersToSleep() {
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (othersSleep()) return true;
        ::poll(nullptr, 0, 1);
    }
    return false;
}

[[noreturn]] void serve(const std::string& order, const std::array<int, descriptorCount>& descriptors) {
    std::vector<const char*> arguments;
    for (std::size_t at = 0; at < order.size(); at += std::strlen(order.data() + at) + 1)
        arguments.push_back(order.data() + at);
    // Out of the way of the descriptors that are their places.
    constexpr int above = CodecProcess::fileDescriptor + 1;
    const int answer = ::fcntl(descriptors[0], F_DUPFD, above);
    const int pixels = ::fcntl(descriptors[1], F_DUPFD, above);
    const int file = ::fcntl(descriptors[2], F_DUPFD, above);
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (::dup2(nothing, STDIN_FILENO) < 0 || ::dup2(answer, STDOUT_FILENO) < 0 ||
        ::dup2(pixels, CodecProcess::pixelsDescriptor) < 0 || ::dup2(file, CodecProcess::fileDescriptor) < 0)
        ::_exit(2);
    ::closefrom(above);
    CodecProcess::run(static_cast<int>(arguments.size()), arguments.data(), CodecProcess::Start::Copied);
}

} // namespace

CodecServer& CodecServer::instance() {
    static CodecServer& server = *new CodecServer;
    return server;
}

bool CodecServer::launch() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    // A group of its own, which it ends as a whole.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    std::string name = "lenscorrect", argument = marker;
    char* const arguments[] = {name.data(), argument.data(), nullptr};
    // Linear algebra, which nothing here needs, starts a thread for each core as it is loaded. The first entry of a
    // name counts.
    std::string oneThread = "OPENBLAS_NUM_THREADS=1";
    std::vector<char*> variables{oneThread.data()};
    for (char** variable = environ; *variable != nullptr; ++variable) variables.push_back(*variable);
    variables.push_back(nullptr);
    const int error = ::posix_spawn(&m_process, "/proc/self/exe", &actions, &attributes, arguments, variables.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    if (error != 0) {
        ::close(ends[0]);
        return false;
    }
    m_socket = ends[0];
    return true;
}

void CodecServer::drop() {
    ::close(m_socket);
    m_socket = -1;
    // Its group: decoders that it has copied go on otherwise.
    ::kill(-m_process, SIGKILL);
    while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) continue;
}

pid_t CodecServer::start(const CodecProcess& order, int answer, int pixels, int file) {
    const std::lock_guard<std::mutex> lock(m_access);
    const std::string text = joined(order.arguments());
    if (text.size() > maxOrderBytes) return -1;
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (m_socket < 0 && !launch()) return -1;
        pid_t process = -1;
        ssize_t count = -1;
        if (send(m_socket, text, {answer, pixels, file})) {
            do count = ::recv(m_socket, &process, sizeof process, 0);
            while (count < 0 && errno == EINTR);
        }
        if (count == sizeof process) return process;
        drop();
    }
    return -1;
}

bool CodecServer::isMeant(int argumentCount, const char* const* arguments) {
    return argumentCount == 2 && std::strcmp(arguments[1], marker) == 0;
}

void CodecServer::run() {
    ::signal(SIGINT, SIG_IGN);
    ::signal(SIGTERM, SIG_IGN);
    for (;;) {
        std::array<int, descriptorCount> descriptors{};
        const std::string order = receive(STDIN_FILENO, descriptors);
        if (order.empty()) {
            // Nobody wants the frames any more.
            if (::getpgrp() == ::getpid()) ::kill(0, SIGKILL);
            ::_exit(0);
        }
        loadReaderModule(order.data() + order.rfind('\0', order.size() - 2) + 1);
        // A child of the one who asks, which so learns how it ended. No handler runs as for fork(): what allocators do
        // for it is to wait for their locks.
        long process = -1;
        if (waitForOthersToSleep())
            process = ::syscall(SYS_clone, CLONE_PARENT | SIGCHLD, nullptr, nullptr, nullptr, nullptr);
        if (process == 0) serve(order, descriptors);
        for (const int descriptor : descriptors) ::close(descriptor);
        const pid_t answer = static_cast<pid_t>(process);
        if (::send(STDIN_FILENO, &answer, sizeof answer, MSG_NOSIGNAL) != sizeof answer) ::_exit(1);
    }
}

} // namespace Image
