#pragma once

namespace Image {

/// WriteByName: what is opened for writing is not looked at, since libraries make their file by name.
enum class FileAccess { Read, WriteByName };

/// Forbids this process, for the rest of its life, what decoding or encoding a file does not need: sockets, other
/// programs and processes, signals to others, and every change of files but for the access granted. Forbidden calls
/// fail with EPERM. Threads that are started later inherit it. False, without a promise about what is forbidden, if the
/// system does not support it.
bool forbidHarmfulSystemCalls(FileAccess access = FileAccess::Read);

} // namespace Image
