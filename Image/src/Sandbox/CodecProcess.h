#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "FrameReader.h"
#include "FrameWriter.h"
#include "Sandbox/SandboxLimits.h"

namespace Image {

/// One frame to be decoded or encoded in a separate process: what SandboxedReader and writeFrameSandboxed ask this
/// program for.
///
/// The other process is this program with a hidden first argument. It gives up every right that its task does not need
/// (SystemCallFilter, limits of memory, processor time and file size), decodes or encodes, writes to its standard
/// output, and ends:
///
///     8 bytes  kind: a Reply
///     8 bytes  how many bytes follow
///     bytes    a FrameMessage; or the problem as text; none for an encoded frame
///
/// Numbers are in the machine's own order. Pixels are in the memory that both processes share, a file behind the
/// descriptor `pixelsDescriptor`: plane after plane, each at the next multiple of 64 bytes. A decoder completes them
/// before its answer begins. For an encoder, which finds them complete, the frame's description comes before them: 8
/// bytes that say how many follow, a FrameMessage, and the pixels at the next multiple of 64 bytes. It makes its file
/// behind the descriptor `fileDescriptor`, in memory too.
struct CodecProcess {
    enum class Task { DecodeHeader, DecodePixels, Encode };
    enum class Reply : std::uint64_t { Frame = 1, Problem = 2, Unsupported = 3, Encoded = 4 };
    /// Started on its own, or as a copy by the CodecServer.
    enum class Start { Own, Copied };
    static constexpr int pixelsDescriptor = 3;
    static constexpr int fileDescriptor = 4;

    /// Encoders take the format from it and no more.
    std::string path;
    Limits limits;
    SandboxLimits sandbox;
    Task task = Task::DecodeHeader;
    unsigned threads = 1;
    std::int64_t index = 0;
    std::optional<std::string> compression = {}; ///< as WriteOptions
    std::optional<PixelType> pixelType = {};     ///< as WriteOptions

    /// The command line of the process.
    std::vector<std::string> arguments() const;

    /// Whether a command line is such a one.
    static bool isMeant(int argumentCount, const char* const* arguments);
    /// What the process does. Call it before anything else in main; it never returns.
    [[noreturn]] static void run(int argumentCount, const char* const* arguments, Start start = Start::Own);
};

/// The next multiple of 64.
constexpr std::uint64_t sharedPlace(std::uint64_t bytes) { return (bytes + 63) / 64 * 64; }

/// Where each plane of all parts begins in the shared memory, in the order of parts and planes, followed by the total
/// number of bytes.
std::vector<std::uint64_t> sharedOffsets(const Frame& frame);

} // namespace Image
