// Loaded before the C library (LD_PRELOAD), lets one file call on the output side fail:
//
//     OUTPUT_FAULT="FUNCTION:N:ERRNO"   call N (from 1) of the function fails with that error number
//     OUTPUT_FAULT_FOLDER=/path         only calls for files below this folder count
//     OUTPUT_FAULT_COUNT=/path          there, the number of such calls is written when the process ends
//     OUTPUT_FAULT_LOG=/path            there, every call for such a file is noted: function and path
//
// FUNCTION is open, write, close, fsync, rename or mkdir. A failing close closes the file all the same, as
// systems do. The 64-bit variants and those with a folder's descriptor count as the same function.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

static atomic_int calls;

static bool isBelow(const char* path) {
    const char* const folder = getenv("OUTPUT_FAULT_FOLDER");
    if (!folder || !path) return false;
    char absolute[PATH_MAX];
    if (path[0] != '/') {
        if (!getcwd(absolute, sizeof absolute) || strlen(absolute) + strlen(path) + 2 > sizeof absolute) return false;
        strcat(strcat(absolute, "/"), path);
        path = absolute;
    }
    const size_t length = strlen(folder);
    return strncmp(path, folder, length) == 0 && (path[length] == '/' || path[length] == '\0');
}

static void note(const char* function, const char* path) {
    const char* const log = getenv("OUTPUT_FAULT_LOG");
    const int descriptor = log ? open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666) : -1;
    if (descriptor < 0) return;
    dprintf(descriptor, "%s %s\n", function, path);
    close(descriptor);
}

// Whether this call of a function for that file is the one that fails; errno is then set.
static bool fails(const char* function, const char* path) {
    if (!isBelow(path)) return false;
    note(function, path);
    const char* const fault = getenv("OUTPUT_FAULT");
    const size_t length = strlen(function);
    if (!fault || strncmp(fault, function, length) != 0 || fault[length] != ':') return false;
    int number = 0, error = 0;
    if (sscanf(fault + length, ":%d:%d", &number, &error) != 2) return false;
    if (atomic_fetch_add(&calls, 1) + 1 != number) return false;
    errno = error;
    return true;
}

static bool failsForDescriptor(const char* function, int descriptor) {
    char link[64], path[PATH_MAX];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t size = readlink(link, path, sizeof path - 1);
    if (size < 0) return false;
    path[size] = '\0';
    return fails(function, path);
}

__attribute__((destructor)) static void tellCount(void) {
    const char* const path = getenv("OUTPUT_FAULT_COUNT");
    FILE* const file = path ? fopen(path, "w") : NULL;
    if (!file) return;
    fprintf(file, "%d\n", atomic_load(&calls));
    fclose(file);
}

#define NEXT(name) __typeof__(&name) next = (__typeof__(&name))dlsym(RTLD_NEXT, #name)

// Reading is not the output side.
static bool isForWriting(int flags) { return (flags & O_ACCMODE) != O_RDONLY; }

#define DEFINE_OPEN(name)                                                               \
    int name(const char* path, int flags, ...) {                                        \
        NEXT(name);                                                                     \
        va_list list;                                                                   \
        va_start(list, flags);                                                          \
        const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(list, mode_t) : 0; \
        va_end(list);                                                                   \
        if (isForWriting(flags) && fails("open", path)) return -1;                      \
        return next(path, flags, mode);                                                 \
    }
DEFINE_OPEN(open)
DEFINE_OPEN(open64)

#define DEFINE_OPENAT(name)                                                             \
    int name(int folder, const char* path, int flags, ...) {                            \
        NEXT(name);                                                                     \
        va_list list;                                                                   \
        va_start(list, flags);                                                          \
        const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(list, mode_t) : 0; \
        va_end(list);                                                                   \
        if (isForWriting(flags) && fails("open", path)) return -1;                      \
        return next(folder, path, flags, mode);                                         \
    }
DEFINE_OPENAT(openat)
DEFINE_OPENAT(openat64)

#define DEFINE_FOPEN(name)                                      \
    FILE* name(const char* path, const char* mode) {            \
        NEXT(name);                                             \
        if (mode[0] != 'r' && fails("open", path)) return NULL; \
        return next(path, mode);                                \
    }
DEFINE_FOPEN(fopen)
DEFINE_FOPEN(fopen64)

ssize_t write(int descriptor, const void* bytes, size_t size) {
    NEXT(write);
    if (failsForDescriptor("write", descriptor)) return -1;
    return next(descriptor, bytes, size);
}

ssize_t writev(int descriptor, const struct iovec* parts, int count) {
    NEXT(writev);
    if (failsForDescriptor("write", descriptor)) return -1;
    return next(descriptor, parts, count);
}

#define DEFINE_PWRITE(name, offset_type)                                               \
    ssize_t name(int descriptor, const void* bytes, size_t size, offset_type offset) { \
        NEXT(name);                                                                    \
        if (failsForDescriptor("write", descriptor)) return -1;                        \
        return next(descriptor, bytes, size, offset);                                  \
    }
DEFINE_PWRITE(pwrite, off_t)
DEFINE_PWRITE(pwrite64, off64_t)

int close(int descriptor) {
    NEXT(close);
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || !isForWriting(flags) || !failsForDescriptor("close", descriptor)) return next(descriptor);
    const int error = errno;
    next(descriptor);
    errno = error;
    return -1;
}

int fsync(int descriptor) {
    NEXT(fsync);
    return failsForDescriptor("fsync", descriptor) ? -1 : next(descriptor);
}

int fdatasync(int descriptor) {
    NEXT(fdatasync);
    return failsForDescriptor("fsync", descriptor) ? -1 : next(descriptor);
}

int rename(const char* from, const char* to) {
    NEXT(rename);
    return fails("rename", to) ? -1 : next(from, to);
}

int mkdir(const char* path, mode_t mode) {
    NEXT(mkdir);
    return fails("mkdir", path) ? -1 : next(path, mode);
}
