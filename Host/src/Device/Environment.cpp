#include "Device/Environment.h"

#include <malloc.h>

#include <cstdlib>
#include <limits>

namespace Host {

void prepareForRendering() {
    if (!std::getenv("GLIBC_TUNABLES")) {
        mallopt(M_MMAP_THRESHOLD, 1 << 30);
        mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    }
    setenv("POCL_MAX_WORK_GROUP_SIZE", "1024", 0);
}

} // namespace Host
