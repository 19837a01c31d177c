#include "Exception/Assert.h"

#include <cstdio>
#include <cstdlib>

void orvexAssertionFailed(const char* expression, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: Assertion failed: %s\n", file, line, expression);
    std::abort();
}
