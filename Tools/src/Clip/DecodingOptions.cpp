#include "Clip/DecodingOptions.h"

#include "Files.h"
#include "Sandbox/SandboxedReader.h"
#include "Sandbox/SandboxedWriter.h"

namespace Tools {

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

} // namespace Tools
