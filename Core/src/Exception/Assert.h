#pragma once

/// Stops the process when a programming error is found; active in every build type.
///
/// Prints "FILE:LINE: Assertion failed: EXPRESSION" to the standard error stream (FILE relative to the repository) and
/// aborts. No file, record or user input may trigger it: invalid input ends in an Exception or a false result.
#define ORVEX_ASSERT(expression) \
    (static_cast<bool>(expression) ? static_cast<void>(0) : orvexAssertionFailed(#expression, __FILE__, __LINE__))

/// Prints the failed check and aborts; called by ORVEX_ASSERT only.
[[noreturn]] void orvexAssertionFailed(const char* expression, const char* file, int line);
