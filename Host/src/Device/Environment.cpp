#include "Device/Environment.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <thread>

namespace Host {

namespace {

// The CPU driver deals out 256 × threads groups at a time; of these sizes it deals 400,000 pixels, on any processor.
unsigned int workGroupSize() {
    const char* limit = std::getenv("POCL_MAX_PTHREAD_COUNT");
    unsigned int threads = limit ? static_cast<unsigned int>(std::max(0, std::atoi(limit))) : 0;
    if (threads == 0) threads = std::max(1u, std::thread::hardware_concurrency());
    const unsigned int vector = 32; // items; no loop over a group has a rest
    return std::clamp(1536 / threads / vector * vector, 64u, 1024u);
}

} // namespace

void prepareForRendering() { setenv("POCL_MAX_WORK_GROUP_SIZE", std::to_string(workGroupSize()).c_str(), 0); }

} // namespace Host
