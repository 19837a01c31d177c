#include "Sandbox/SystemCallFilter.h"

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>

namespace Image {

namespace {

// Names that an architecture lacks are fine: libseccomp gives them numbers of its own and skips them.
#define ORVEX_CALL(name) SCMP_SYS(name)
constexpr std::initializer_list<int> forbidden{
    // network
    ORVEX_CALL(socket), ORVEX_CALL(socketpair),
    // other programs and processes
    ORVEX_CALL(execve), ORVEX_CALL(execveat), ORVEX_CALL(fork), ORVEX_CALL(vfork), ORVEX_CALL(ptrace),
    ORVEX_CALL(process_vm_readv), ORVEX_CALL(process_vm_writev), ORVEX_CALL(pidfd_open), ORVEX_CALL(pidfd_getfd),
    ORVEX_CALL(pidfd_send_signal), ORVEX_CALL(kill), ORVEX_CALL(tkill), ORVEX_CALL(rt_sigqueueinfo),
    ORVEX_CALL(rt_tgsigqueueinfo), ORVEX_CALL(setpriority), ORVEX_CALL(setpgid), ORVEX_CALL(setsid),
    // memory and queues that others share
    ORVEX_CALL(shmget), ORVEX_CALL(shmat), ORVEX_CALL(msgget), ORVEX_CALL(semget), ORVEX_CALL(mq_open),
    // files
    ORVEX_CALL(creat), ORVEX_CALL(truncate), ORVEX_CALL(rename), ORVEX_CALL(renameat), ORVEX_CALL(renameat2),
    ORVEX_CALL(unlink), ORVEX_CALL(unlinkat), ORVEX_CALL(link), ORVEX_CALL(linkat), ORVEX_CALL(symlink),
    ORVEX_CALL(symlinkat), ORVEX_CALL(mkdir), ORVEX_CALL(mkdirat), ORVEX_CALL(rmdir), ORVEX_CALL(mknod),
    ORVEX_CALL(mknodat), ORVEX_CALL(chmod), ORVEX_CALL(fchmod), ORVEX_CALL(fchmodat), ORVEX_CALL(chown),
    ORVEX_CALL(fchown), ORVEX_CALL(lchown), ORVEX_CALL(fchownat), ORVEX_CALL(setxattr), ORVEX_CALL(lsetxattr),
    ORVEX_CALL(fsetxattr), ORVEX_CALL(removexattr), ORVEX_CALL(lremovexattr), ORVEX_CALL(fremovexattr),
    ORVEX_CALL(utime), ORVEX_CALL(utimes), ORVEX_CALL(futimesat), ORVEX_CALL(utimensat),
    // ways round the rules above, and doors into the kernel that nothing here needs
    ORVEX_CALL(io_uring_setup), ORVEX_CALL(bpf), ORVEX_CALL(perf_event_open), ORVEX_CALL(userfaultfd),
    ORVEX_CALL(keyctl), ORVEX_CALL(add_key), ORVEX_CALL(request_key), ORVEX_CALL(mount), ORVEX_CALL(umount2),
    ORVEX_CALL(pivot_root), ORVEX_CALL(chroot), ORVEX_CALL(unshare), ORVEX_CALL(setns), ORVEX_CALL(open_by_handle_at),
    ORVEX_CALL(setrlimit)};
#undef ORVEX_CALL

bool addRules(scmp_filter_ctx filter, FileAccess access) {
    constexpr std::uint32_t refused = SCMP_ACT_ERRNO(EPERM);
    // The C library falls back to the older calls, whose arguments can be looked at.
    constexpr std::uint32_t unknown = SCMP_ACT_ERRNO(ENOSYS);
    bool done = true;
    const auto add = [&](std::uint32_t action, int call, std::initializer_list<scmp_arg_cmp> conditions) {
        done = seccomp_rule_add_array(filter, action, call, static_cast<unsigned>(conditions.size()),
                                      conditions.size() == 0 ? nullptr : conditions.begin()) == 0 &&
               done;
    };
    const auto equal = [](unsigned argument, std::uint64_t mask, std::uint64_t value) {
        return scmp_arg_cmp{argument, SCMP_CMP_MASKED_EQ, mask, value};
    };
    for (const int call : forbidden) add(refused, call, {});
    for (const int call : {SCMP_SYS(openat2), SCMP_SYS(clone3)}) add(unknown, call, {});
    // No process, but threads.
    add(refused, SCMP_SYS(clone), {equal(0, CLONE_THREAD, 0)});
    for (const unsigned flag : {unsigned{O_WRONLY}, unsigned{O_RDWR}, unsigned{O_CREAT}, unsigned{O_TRUNC}}) {
        if (access == FileAccess::WriteByName) break;
        add(refused, SCMP_SYS(open), {equal(1, flag, flag)});
        add(refused, SCMP_SYS(openat), {equal(2, flag, flag)});
    }
    // Limits of other processes, signals to other processes: abort() sends one to its own.
    add(refused, SCMP_SYS(prlimit64), {scmp_arg_cmp{0, SCMP_CMP_NE, 0, 0}});
    add(refused, SCMP_SYS(tgkill), {scmp_arg_cmp{0, SCMP_CMP_NE, static_cast<std::uint64_t>(getpid()), 0}});
    return done;
}

} // namespace

bool forbidHarmfulSystemCalls(FileAccess access) {
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    if (filter == nullptr) return false;
    const bool done = addRules(filter, access) && seccomp_load(filter) == 0;
    seccomp_release(filter);
    return done;
}

} // namespace Image
