#pragma once

#include <memory>
#include <optional>
#include <string>

#include "FrameReader.h"
#include "FrameWriter.h"
#include "Sandbox/SandboxLimits.h"

namespace Tools {

/// How the files of a clip are opened and written: what they may claim to be, and whether those and the libraries that
/// decode and encode them are trusted.
struct DecodingOptions {
    Image::Limits limits;
    /// Which files are decoded in a separate process. Unless Off, every still but EXR is encoded in one.
    enum class Sandbox {
        Auto, ///< those that are not decoded by OpenEXR, whose decoders may crash
        On,   ///< all; an error where the system cannot forbid what decoding does not need
        Off
    };
    Sandbox sandbox = Sandbox::Auto;
    Image::SandboxLimits sandboxLimits;

    /// A reader of the file. Throws Image::ImageError; with a sandbox, only its calls do.
    std::unique_ptr<Image::FrameReader> openReader(const std::string& path) const;
    /// As Image::writeFrame. Throws Image::ImageError.
    void writeFrame(const std::string& path, const Image::Frame& frame, const Image::WriteOptions& options) const;

private:
    Image::SandboxLimits grantedLimits() const;
};

} // namespace Tools
