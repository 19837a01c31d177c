#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Image/FrameReader.h"
#include "Image/Sandbox/SandboxLimits.h"

namespace HostImage {

/// One frame to be decoded in a separate process: what SandboxedReader asks this program for.
///
/// The other process is this program with a hidden first argument. It gives up every right that decoding does not need
/// (SystemCallFilter, limits of memory, processor time and file size), decodes, writes to its standard output, and
/// ends:
///
///     8 bytes  kind: a Reply
///     8 bytes  how many bytes follow
///     bytes    a FrameMessage; or the problem as text
///
/// Numbers are in the machine's own order. Pixels are in the memory that both processes share, a file behind the
/// descriptor `pixelsDescriptor`: plane after plane, each at the next multiple of 64 bytes, complete before the answer
/// begins.
struct CodecProcess {
    enum class Reply : std::uint64_t { Frame = 1, Problem = 2, Unsupported = 3 };
    /// Started on its own, or as a copy by the CodecServer.
    enum class Start { Own, Copied };
    static constexpr int pixelsDescriptor = 3;

    std::string path;
    Limits limits;
    SandboxLimits sandbox;
    bool withPixels = false;
    unsigned threads = 1;
    std::int64_t index = 0;

    /// The command line of the process.
    std::vector<std::string> arguments() const;

    /// Whether a command line is such a one.
    static bool isMeant(int argumentCount, const char* const* arguments);
    /// What the process does. Call it before anything else in main; it never returns.
    [[noreturn]] static void run(int argumentCount, const char* const* arguments, Start start = Start::Own);
};

/// Where each plane of all parts begins in the shared memory, in the order of parts and planes, followed by the total
/// number of bytes.
std::vector<std::uint64_t> sharedOffsets(const Frame& frame);

} // namespace HostImage
