/* Loaded before the program: whichever process opens a file whose path holds CRASH_ON_OPEN is killed at once, as by
   a crash. By a signal that no sanitizer catches. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>

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
