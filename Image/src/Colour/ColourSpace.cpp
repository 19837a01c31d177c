#include "Colour/ColourSpace.h"

#include <cstdlib>

#include "ImageModule.h"

namespace Image {

std::string colourConfigFile(const std::string& configFile) {
    if (!configFile.empty()) return configFile;
    const char* const variable = std::getenv("OCIO");
    return variable == nullptr ? std::string() : variable;
}

std::unique_ptr<ColourSpace> openColourSpace(const std::string& name, const std::string& configFile) {
    using Open = ColourSpace* (*)(const std::string& name, const std::string& configFile);
    const auto open = reinterpret_cast<Open>(moduleFunction(name, "ColourModule", "orvexOpenColourSpace"));
    return std::unique_ptr<ColourSpace>(open(name, colourConfigFile(configFile)));
}

} // namespace Image
