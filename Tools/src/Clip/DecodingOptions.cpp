#include "Clip/DecodingOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

#include "FileExtension.h"
#include "Report/Failure.h"
#include "Report/MemorySize.h"
#include "Sandbox/SandboxedReader.h"
#include "Sandbox/SandboxedWriter.h"

namespace Tools {
namespace {

/// Sixteen half or eight float channels in each pixel of the largest picture; and no less than without the option.
constexpr std::int64_t bytesPerPixel = 32;
/// Less, and the program itself does not start.
constexpr std::uint64_t leastMemory = std::uint64_t{256} << 20;

Image::Limits limitsOf(const std::string& text) {
    Image::Limits limits;
    constexpr std::int64_t longest = 1 << 24; // beyond it, single precision does not tell pixels apart
    std::int64_t width = 0, height = 0;
    const char* const end = text.data() + text.size();
    const auto [cross, widthError] = std::from_chars(text.data(), end, width);
    bool isSize = widthError == std::errc() && cross != end && *cross == 'x';
    if (isSize) {
        const auto [rest, heightError] = std::from_chars(cross + 1, end, height);
        isSize = heightError == std::errc() && rest == end;
    }
    if (!isSize || std::min(width, height) < 1 || std::max(width, height) > longest)
        refuse("--max-image " + text + " is not a size such as 65536x8192, each side 1 to 16777216.");
    limits.maxSide = std::max(width, height);
    limits.maxPixels = width * height;
    limits.maxBytes = std::max(limits.maxBytes, limits.maxPixels * bytesPerPixel);
    return limits;
}

} // namespace

std::unique_ptr<Image::FrameReader> DecodingOptions::openReader(const std::string& path) const {
    if (sandbox == Sandbox::On || (sandbox == Sandbox::Auto && Image::fileExtension(path) != "exr"))
        return std::make_unique<Image::SandboxedReader>(path, limits, grantedLimits());
    return Image::openReader(path, limits);
}

void DecodingOptions::writeFrame(const std::string& path, const Image::Frame& frame,
                                 const Image::WriteOptions& options) const {
    if (sandbox == Sandbox::Off)
        Image::writeFrame(path, frame, options);
    else
        Image::writeFrameSandboxed(path, frame, options, grantedLimits());
}

Image::SandboxLimits DecodingOptions::grantedLimits() const {
    Image::SandboxLimits granted = sandboxLimits;
    granted.isRequired = sandbox == Sandbox::On;
    return granted;
}

void DecodingOptionsReader::declareOptions(CLI::App& app) {
    CLI::Option_group& group = *app.add_option_group("Untrusted files");
    group.add_option("--max-image", m_maxImage,
                     "Refuse files with more pixels than WxH, or with a side longer than the larger value; default: "
                     "65536x8192");
    group
        .add_flag("--sandbox{on}", m_sandbox,
                  "Decode each frame in a separate, confined process; --sandbox=auto (default): all files but EXR; "
                  "--sandbox=off: none. Unless off, DPX, TIFF, PNG and JPEG are encoded in one too")
        ->check(CLI::IsMember({"auto", "on", "off"}));
    group.add_option("--sandbox-memory", m_memory, "Memory limit of that process; default: 8G");
    group.add_option("--sandbox-time", m_seconds, "Time limit per frame in seconds; default: 60")
        ->check(CLI::Range(1, 86400));
}

DecodingOptions DecodingOptionsReader::read() const {
    DecodingOptions options;
    if (!m_maxImage.empty()) options.limits = limitsOf(m_maxImage);
    using Sandbox = DecodingOptions::Sandbox;
    options.sandbox = m_sandbox == "on" ? Sandbox::On : m_sandbox == "off" ? Sandbox::Off : Sandbox::Auto;
    if (options.sandbox == Sandbox::Off && (!m_memory.empty() || m_seconds))
        refuse("--sandbox-memory and --sandbox-time cannot be combined with --sandbox=off.");
    if (!m_memory.empty()) options.sandboxLimits.memory = parseMemorySize(m_memory);
    if (options.sandboxLimits.memory < leastMemory) refuse("--sandbox-memory " + m_memory + " is less than 256M.");
    if (m_seconds) options.sandboxLimits.seconds = *m_seconds;
    return options;
}

} // namespace Tools
