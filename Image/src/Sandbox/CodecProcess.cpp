#include "Sandbox/CodecProcess.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <new>

#include "ImageError.h"
#include "MemoryFile.h"
#include "Sandbox/FrameMessage.h"
#include "Sandbox/SystemCallFilter.h"

namespace Image {

namespace {

constexpr const char* marker = "--code-one-frame-in-a-sandbox";
constexpr int argumentCountMeant = 15;

bool limit(__rlimit_resource_t resource, std::uint64_t value) {
    // A farm's own limit may be lower; nobody may raise it.
    rlimit both{};
    if (::getrlimit(resource, &both) != 0) return false;
    both.rlim_cur = both.rlim_max = std::min(both.rlim_max, static_cast<rlim_t>(value));
    return ::setrlimit(resource, &both) == 0;
}

bool giveUpRights(const CodecProcess& order, CodecProcess::Start start) {
    // The one who asks decides when to stop; if it is gone, nobody wants the frame. A copy's parent is the thread that
    // has started the server: that thread may end long before the others, and the server ends its copies itself.
    ::signal(SIGINT, SIG_IGN);
    ::signal(SIGTERM, SIG_IGN);
    // Which the program ignores, and with it what it starts.
    ::signal(SIGXFSZ, SIG_DFL);
    if (start == CodecProcess::Start::Own) ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const bool isEncoder = order.task == CodecProcess::Task::Encode;
    // Too large a file ends an encoder by a signal: not every library tells that it could not write.
    bool done = limit(RLIMIT_CPU, std::uint64_t{order.sandbox.seconds} * order.threads) &&
                limit(RLIMIT_FSIZE, isEncoder ? order.sandbox.memory : 0) && limit(RLIMIT_CORE, 0);
#ifndef ORVEX_SANITIZED // which reserves terabytes of address space
    done = limit(RLIMIT_AS, order.sandbox.memory) && done;
#endif
    return done && forbidHarmfulSystemCalls(isEncoder ? FileAccess::WriteByName : FileAccess::Read);
}

void send(const void* bytes, std::size_t n) {
    const char* from = static_cast<const char*>(bytes);
    while (n > 0) {
        const ssize_t count = ::write(STDOUT_FILENO, from, n);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) ::_exit(1);
        from += count;
        n -= static_cast<std::size_t>(count);
    }
}

void reply(CodecProcess::Reply kind, const std::string& bytes) {
    const std::uint64_t head[] = {static_cast<std::uint64_t>(kind), bytes.size()};
    send(head, sizeof head);
    send(bytes.data(), bytes.size());
}

/// Decodes straight into the shared memory: its planes lie there.
void readSharedPixels(FrameReader& reader, const CodecProcess& order, Frame& frame) {
    frame = reader.readHeader(order.index);
    const std::vector<std::uint64_t> offsets = sharedOffsets(frame);
    void* const memory = ::mmap(nullptr, offsets.back(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE,
                                CodecProcess::pixelsDescriptor, 0);
    if (memory == MAP_FAILED) throw ImageError(order.path, "not enough memory for its pixels");
    const auto place = [memory, &offsets](std::size_t plane) {
        return static_cast<std::uint8_t*>(memory) + offsets[plane];
    };
    std::size_t index = 0;
    for (Part& part : frame.parts)
        for (Plane& plane : part.planes) {
            plane.pixels = PixelBuffer(place(index), plane.rowBytes() * plane.height);
            ++index;
        }
    reader.readPixels(frame, order.threads, order.index);
    if (sharedOffsets(frame) != offsets) throw ImageError(order.path, "changed while it was being read");
    // A reader may have planes with memory of their own.
    index = 0;
    for (const Part& part : frame.parts)
        for (const Plane& plane : part.planes) {
            if (plane.pixels.data() != place(index))
                std::memcpy(place(index), plane.pixels.data(), plane.pixels.size());
            ++index;
        }
}

void decode(const CodecProcess& order) {
    const std::unique_ptr<FrameReader> reader = openReader(order.path, order.limits);
    FrameMessage message;
    message.frameCount = reader->frameCount();
    if (order.task == CodecProcess::Task::DecodePixels)
        readSharedPixels(*reader, order, message.frame);
    else
        message.frame = reader->readHeader(order.index);
    reply(CodecProcess::Reply::Frame, message.bytes());
}

/// Encodes straight from the shared memory.
void encode(const CodecProcess& order) {
    MemoryFile pixels(CodecProcess::pixelsDescriptor), file(CodecProcess::fileDescriptor);
    std::uint8_t* const memory = pixels.bytes();
    std::uint64_t messageBytes = 0;
    if (pixels.size() < sizeof messageBytes) throw ImageError(order.path, "its pixels are missing");
    std::memcpy(&messageBytes, memory, sizeof messageBytes);
    if (messageBytes > pixels.size() - sizeof messageBytes) throw ImageError(order.path, "its description is missing");
    const std::string_view message(reinterpret_cast<const char*>(memory) + sizeof messageBytes,
                                   static_cast<std::size_t>(messageBytes));
    Frame frame = FrameMessage::parse(message, order.limits).frame;
    const std::uint64_t start = sharedPlace(sizeof messageBytes + messageBytes);
    const std::vector<std::uint64_t> offsets = sharedOffsets(frame);
    if (pixels.size() < start + offsets.back()) throw ImageError(order.path, "its pixels are missing");
    std::size_t index = 0;
    for (Part& part : frame.parts)
        for (Plane& plane : part.planes)
            plane.pixels = PixelBuffer(memory + start + offsets[index++], plane.rowBytes() * plane.height);
    encodeStill(order.path, frame,
                {.compression = order.compression, .pixelType = order.pixelType, .threads = order.threads}, file);
    reply(CodecProcess::Reply::Encoded, {});
}

template <typename Number>
bool parse(const char* text, Number& number) {
    const char* const end = text + std::strlen(text);
    const auto [rest, error] = std::from_chars(text, end, number);
    return error == std::errc() && rest == end;
}

} // namespace

std::vector<std::string> CodecProcess::arguments() const {
    return {"lenscorrect",
            marker,
            std::to_string(static_cast<unsigned>(task)),
            std::to_string(index),
            std::to_string(threads),
            std::to_string(sandbox.memory),
            std::to_string(sandbox.seconds),
            sandbox.isRequired ? "1" : "0",
            std::to_string(limits.maxSide),
            std::to_string(limits.maxPixels),
            std::to_string(limits.maxChannels),
            std::to_string(limits.maxBytes),
            compression ? "=" + *compression : "",
            pixelType ? std::to_string(static_cast<unsigned>(*pixelType)) : "",
            path};
}

bool CodecProcess::isMeant(int argumentCount, const char* const* arguments) {
    return argumentCount == argumentCountMeant && std::strcmp(arguments[1], marker) == 0;
}

void CodecProcess::run(int argumentCount, const char* const* arguments, Start start) {
    CodecProcess order;
    unsigned task = 0, isRequired = 0, pixelType = 0;
    if (!isMeant(argumentCount, arguments) || !parse(arguments[2], task) || !parse(arguments[3], order.index) ||
        !parse(arguments[4], order.threads) || !parse(arguments[5], order.sandbox.memory) ||
        !parse(arguments[6], order.sandbox.seconds) || !parse(arguments[7], isRequired) ||
        !parse(arguments[8], order.limits.maxSide) || !parse(arguments[9], order.limits.maxPixels) ||
        !parse(arguments[10], order.limits.maxChannels) || !parse(arguments[11], order.limits.maxBytes) ||
        (*arguments[13] != '\0' && !parse(arguments[13], pixelType)) || task > static_cast<unsigned>(Task::Encode) ||
        pixelType > static_cast<unsigned>(PixelType::Float))
        ::_exit(2);
    order.task = static_cast<Task>(task);
    if (*arguments[12] != '\0') order.compression = arguments[12] + 1;
    if (*arguments[13] != '\0') order.pixelType = static_cast<PixelType>(pixelType);
    order.sandbox.isRequired = isRequired != 0;
    order.path = arguments[14];
    if (!giveUpRights(order, start) && order.sandbox.isRequired) {
        reply(Reply::Problem, std::string("this system does not support the sandbox; --sandbox=off ") +
                                  (order.task == Task::Encode ? "encodes" : "decodes") + " the file without it");
        ::_exit(1);
    }
    Reply kind = Reply::Problem;
    std::string problem;
    try {
        if (order.task == Task::Encode)
            encode(order);
        else
            decode(order);
        // Exit handlers of image libraries are no more to be trusted than they.
        ::_exit(0);
    } catch (const ImageError& error) {
        if (dynamic_cast<const UnsupportedImage*>(&error) != nullptr) kind = Reply::Unsupported;
        problem = error.what();
        const std::string prefix = order.path + ": ";
        if (problem.starts_with(prefix)) problem.erase(0, prefix.size());
    } catch (const std::bad_alloc&) {
        problem = "there is not enough memory for it";
    } catch (const std::exception& error) {
        problem = error.what();
    }
    reply(kind, problem);
    ::_exit(1);
}

std::vector<std::uint64_t> sharedOffsets(const Frame& frame) {
    std::vector<std::uint64_t> offsets{0};
    for (const Part& part : frame.parts)
        for (const Plane& plane : part.planes)
            offsets.push_back(offsets.back() + sharedPlace(plane.rowBytes() * plane.height));
    return offsets;
}

} // namespace Image
