#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace Image {

/// A colour space of an OpenColorIO configuration, converted to the configuration's scene-linear space and back.
///
/// The round trip restores every value from 0 to 1: openColourSpace refuses spaces for which it does not. With the
/// built-in configuration the error is below 3e-7, so that a picture of up to 16 bit comes back with equal samples.
/// Values are converted as they are, whatever a pixel's alpha is. Any number of threads may convert at once.
class ColourSpace {
public:
    ColourSpace() = default;
    ColourSpace(const ColourSpace&) = delete;
    ColourSpace& operator=(const ColourSpace&) = delete;
    virtual ~ColourSpace() = default;

    /// Converts `count` pixels, R, G, B, R, G, B ..., in place.
    virtual void toSceneLinear(float* pixels, std::size_t count) const = 0;
    virtual void fromSceneLinear(float* pixels, std::size_t count) const = 0;
};

/// Finds the space by its name, an alias or a role in the configuration `configFile`; in that of $OCIO if it is empty;
/// in the built-in one (default.ocio) if the variable is not set either. Loads OpenImageIO, which takes a fifth of a
/// second.
///
/// Throws ImageError: the configuration cannot be read or has no scene-linear space; it does not have the space (naming
/// those that it has); or the space's values cannot be restored from scene-linear ones.
std::unique_ptr<ColourSpace> openColourSpace(const std::string& name, const std::string& configFile);

/// The file that openColourSpace would read; empty for the built-in configuration.
std::string colourConfigFile(const std::string& configFile);

} // namespace Image
