#include "Device/Environment.h"

#include <malloc.h>

#include <cstdlib>

namespace Host {

void prepareForRendering() {
    if (!std::getenv("GLIBC_TUNABLES")) {
        mallopt(M_MMAP_THRESHOLD, 1 << 30);
        mallopt(M_TRIM_THRESHOLD, -1); // never; any other value would be at most 2 GiB, less than a few large frames
    }
    setenv("POCL_MAX_WORK_GROUP_SIZE", "1024", 0);
}

} // namespace Host
