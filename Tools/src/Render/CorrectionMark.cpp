#include "Render/CorrectionMark.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Tools {
namespace {

constexpr const char* prefix = "com.orvex.lenscorrect.";

std::string distortionText(const ChainSettings& settings) {
    switch (settings.distortion) {
        case ChainSettings::Distortion::Undistort:
            return "undistort";
        case ChainSettings::Distortion::Distort:
            return "distort";
        case ChainSettings::Distortion::None:
            break;
    }
    return {};
}

std::string shadingText(const ChainSettings& settings) {
    switch (settings.shading) {
        case ChainSettings::Shading::Remove:
            return "remove";
        case ChainSettings::Shading::Add:
            return "add";
        case ChainSettings::Shading::None:
            break;
    }
    return {};
}

} // namespace

void CorrectionMark::write(const ChainSettings& settings, const std::string& correctionFile, Image::Frame& frame) {
    const bool isShaded = settings.shading != ChainSettings::Shading::None;
    for (std::size_t i = 0; i < frame.parts.size(); ++i) {
        Image::Part& part = frame.parts[i];
        const auto set = [&part](const std::string& name, const std::string& value) {
            if (!value.empty()) part.setAttribute({std::string(prefix) + name, "string", value});
        };
        set("distortion", distortionText(settings));
        set("shading", shadingText(settings));
        for (const char* const name : {"inputSpace", "correctionFile"})
            part.removeAttribute(std::string(prefix) + name);
        set("inputSpace", settings.inputSpace.value_or(""));
        if (isShaded) part.removeAttribute(std::string(prefix) + "unshaded");
        if (isShaded && !settings.renderMap)
            set("unshaded", fmt::format("{}", fmt::join(settings.shadingLayers.unshaded(frame, i), ", ")));
        set("correctionFile", correctionFile);
        set("version", ORVEX_VERSION);
    }
}

std::string CorrectionMark::objection(const ChainSettings& settings, const Image::Frame& frame) {
    for (const Image::Part& part : frame.parts) {
        for (const auto& [name, wanted] : {std::pair<std::string, std::string>{"distortion", distortionText(settings)},
                                           {"shading", shadingText(settings)}}) {
            if (wanted.empty() || part.text(std::string(prefix) + name) != wanted) continue;
            return "It is already marked with this correction (" + std::string(prefix) + name + " = \"" + wanted +
                   "\"). Use the original, or give --force to correct it again.";
        }
    }
    return {};
}

} // namespace Tools
