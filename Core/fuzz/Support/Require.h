#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program, so that the fuzzer keeps the input, unless the condition holds. Active in every build.
#define REQUIRE(condition)                                                                      \
    do {                                                                                        \
        if (!(condition)) {                                                                     \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                       \
        }                                                                                       \
    } while (false)
