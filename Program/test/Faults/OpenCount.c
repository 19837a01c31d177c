/* Loaded before the program: counts in the file OPEN_COUNT, a four-byte number that exists, how often the program and
   the processes that it starts open a file whose path holds OPEN_COUNT_OF. With OPEN_COUNT_ONCE_A_PROCESS, how many of
   them do so at all: what opens a file in a decoder process, and how often, is up to other libraries. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <unistd.h>

/* Mapped at once: a decoder process may not open it for writing any more. */
static _Atomic int* count;

__attribute__((constructor)) static void map(void) {
    const char* const path = getenv("OPEN_COUNT");
    int (*const next)(const char*, int, ...) = dlsym(RTLD_NEXT, "open");
    const int file = path ? next(path, O_RDWR | O_CLOEXEC) : -1;
    if (file < 0) return;
    void* const memory = mmap(NULL, sizeof *count, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (memory != MAP_FAILED) count = memory;
}

static void note(const char* path) {
    const char* const wanted = getenv("OPEN_COUNT_OF");
    if (!count || !wanted || !strstr(path, wanted)) return;
    static _Atomic pid_t last;
    if (getenv("OPEN_COUNT_ONCE_A_PROCESS") && atomic_exchange(&last, getpid()) == getpid()) return;
    atomic_fetch_add(count, 1);
}

#define OPEN(name)                                                          \
    int name(const char* path, int flags, ...) {                            \
        mode_t mode = 0;                                                    \
        if (flags & (O_CREAT | O_TMPFILE)) {                                \
            va_list arguments;                                              \
            va_start(arguments, flags);                                     \
            mode = va_arg(arguments, mode_t);                               \
            va_end(arguments);                                              \
        }                                                                   \
        note(path);                                                         \
        int (*const next)(const char*, int, ...) = dlsym(RTLD_NEXT, #name); \
        return next(path, flags, mode);                                     \
    }
OPEN(open)
OPEN(open64)
