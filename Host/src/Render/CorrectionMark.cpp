#include "Render/CorrectionMark.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Host {
namespace {

constexpr const char* prefix = "com.orvex.lenscorrect.";

std::string distortionText(const RenderOptions& options) {
    switch (options.distortion) {
        case RenderOptions::Distortion::Undistort:
            return "undistort";
        case RenderOptions::Distortion::Distort:
            return "distort";
        case RenderOptions::Distortion::None:
            break;
    }
    return {};
}

std::string shadingText(const RenderOptions& options) {
    switch (options.shading) {
        case RenderOptions::Shading::Remove:
            return "remove";
        case RenderOptions::Shading::Add:
            return "add";
        case RenderOptions::Shading::None:
            break;
    }
    return {};
}

} // namespace

void CorrectionMark::write(const RenderOptions& options, const std::string& correctionFile, HostImage::Frame& frame) {
    const bool isShaded = options.shading != RenderOptions::Shading::None;
    for (std::size_t i = 0; i < frame.parts.size(); ++i) {
        HostImage::Part& part = frame.parts[i];
        const auto set = [&part](const std::string& name, const std::string& value) {
            if (!value.empty()) part.setAttribute({std::string(prefix) + name, "string", value});
        };
        set("distortion", distortionText(options));
        set("shading", shadingText(options));
        for (const char* const name : {"inputSpace", "correctionFile"})
            part.removeAttribute(std::string(prefix) + name);
        set("inputSpace", options.inputSpace.value_or(""));
        if (isShaded) part.removeAttribute(std::string(prefix) + "unshaded");
        if (isShaded && !options.renderMap)
            set("unshaded", fmt::format("{}", fmt::join(options.shadingLayers.unshaded(frame, i), ", ")));
        set("correctionFile", correctionFile);
        set("version", ORVEX_VERSION);
    }
}

std::string CorrectionMark::objection(const RenderOptions& options, const HostImage::Frame& frame) {
    for (const HostImage::Part& part : frame.parts) {
        for (const auto& [name, wanted] : {std::pair<std::string, std::string>{"distortion", distortionText(options)},
                                           {"shading", shadingText(options)}}) {
            if (wanted.empty() || part.text(std::string(prefix) + name) != wanted) continue;
            return "It is already marked with this correction (" + std::string(prefix) + name + " = \"" + wanted +
                   "\"). Use the original, or give --force to correct it again.";
        }
    }
    return {};
}

} // namespace Host
