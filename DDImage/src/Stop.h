#pragma once

#include <cstdio>
#include <cstdlib>

namespace DD {
namespace Image {

/// Ends the process with a text on the standard error stream: a plug-in used the interface wrongly.
[[noreturn]] inline void stop(const char* text, const char* subject = "") {
    std::fprintf(stderr, "DDImage: %s%s\n", text, subject);
    std::abort();
}

} // namespace Image
} // namespace DD
