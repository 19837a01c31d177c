#include <new>

// Debian builds its static Boost for programs: it takes the address of this object in a way that a library cannot hand
// on to another library. So the plug-in has its own; nothing reads it, and nobody else sees it.
const std::nothrow_t std::nothrow{};
