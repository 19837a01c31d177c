#include "CorrectionFile/Parser/HeaderLine.h"

namespace CorrectionFile {

constexpr std::array<std::string_view, 19> mandatoryHeaderKeys = {"lensManufacturer",
                                                                  "lensTypeName",
                                                                  "lensSerialNumber",
                                                                  "lensMinFocalLength",
                                                                  "lensMaxFocalLength",
                                                                  "cameraManufacturer",
                                                                  "cameraModel",
                                                                  "sensorWidth",
                                                                  "clipName",
                                                                  "videoFileName",
                                                                  "clipDurationFrames",
                                                                  "clipWidth",
                                                                  "clipHeight",
                                                                  "tcFps",
                                                                  "tcDrop",
                                                                  "enableLensShadingCorrection",
                                                                  "shadingGamma",
                                                                  "enableLensDistortionCorrection",
                                                                  "distortionZoom"};

bool splitHeaderLine(std::string_view line, std::string_view& key, std::string_view& value) {
    constexpr std::string_view separator = ":=";
    const std::size_t keyEnd = line.find(separator);
    const bool hasTwoPieces =
        keyEnd != std::string_view::npos && line.find(separator, keyEnd + separator.size()) == std::string_view::npos;
    if (!hasTwoPieces) return false;
    key = line.substr(0, keyEnd);
    value = line.substr(keyEnd + separator.size());
    return true;
}

} // namespace CorrectionFile
