#include "Faults/AllocationFault.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local long allocationsLeft = 0;
thread_local bool hasFailed = false;

} // namespace

namespace AllocationFault {

void arm(long number) {
    allocationsLeft = number;
    hasFailed = false;
}

bool disarm() {
    allocationsLeft = 0;
    return hasFailed;
}

} // namespace AllocationFault

// The library's array forms call these. Aligned allocations are left alone.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (allocationsLeft > 0 && --allocationsLeft == 0) {
        hasFailed = true;
        return nullptr;
    }
    return std::malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size) {
    if (void* const memory = operator new(size, std::nothrow)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
