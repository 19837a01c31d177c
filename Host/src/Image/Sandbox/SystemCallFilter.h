#pragma once

namespace HostImage {

/// Forbids this process, for the rest of its life, what decoding a file does not need: sockets, other programs and
/// processes, signals to others, and every change of files. Forbidden calls fail with EPERM. Threads that are started
/// later inherit it. False, without a promise about what is forbidden, if the system does not support it.
bool forbidHarmfulSystemCalls();

} // namespace HostImage
