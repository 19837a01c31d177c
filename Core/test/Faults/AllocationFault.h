#pragma once

/// Makes chosen allocations of this thread by operator new fail. The program that links it has its own operator new.
namespace AllocationFault {

/// The number-th allocation from now (1: the next) throws std::bad_alloc, and no other; 0 disarms.
void arm(long number);

/// Whether the armed allocation has come; disarms.
bool disarm();

} // namespace AllocationFault
