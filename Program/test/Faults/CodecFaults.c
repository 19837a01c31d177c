/* Loaded before the program: whichever process opens a file whose path holds CRASH_ON_OPEN, or writes bytes that hold
   CRASH_ON_WRITE as an encoder does, is killed at once, as by a crash. By a signal that no sanitizer catches.
   HANG_ON_WRITE: it hangs instead. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

static void crashOn(const char* path) {
    const char* const wanted = getenv("CRASH_ON_OPEN");
    if (wanted && strstr(path, wanted)) raise(SIGKILL);
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
        crashOn(path);                                                      \
        int (*const real)(const char*, int, ...) = dlsym(RTLD_NEXT, #name); \
        return real(path, flags, mode);                                     \
    }
OPEN(open)
OPEN(open64)

static int holds(const void* bytes, size_t size, const char* variable) {
    const char* const wanted = getenv(variable);
    return wanted && memmem(bytes, size, wanted, strlen(wanted));
}

static void failOn(const void* bytes, size_t size) {
    if (holds(bytes, size, "CRASH_ON_WRITE")) raise(SIGKILL);
    while (holds(bytes, size, "HANG_ON_WRITE")) pause();
}

ssize_t write(int file, const void* bytes, size_t size) {
    failOn(bytes, size);
    ssize_t (*const real)(int, const void*, size_t) = dlsym(RTLD_NEXT, "write");
    return real(file, bytes, size);
}

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* file) {
    failOn(bytes, size * count);
    size_t (*const real)(const void*, size_t, size_t, FILE*) = dlsym(RTLD_NEXT, "fwrite");
    return real(bytes, size, count, file);
}
