#pragma once

#include <array>
#include <memory>
#include <string>

#include "Chain/ChainSettings.h"
#include "Colour/ColourSpace.h"
#include "DDImage/Box.h"
#include "DDImage/Channel.h"
#include "DDImage/ImagePlane.h"
#include "Frame.h"

namespace Tools {

/// The colour space of a clip's pixels: whether they are linear light, and the conversion to it and back if they are
/// not.
///
/// Lenses act on light: shading is a factor on linear pixels alone. Immutable; any thread.
class InputSpace {
public:
    /// As the settings name it: without a name, or with ChainSettings::rawInputSpace, nothing is converted and nothing
    /// is loaded. Throws Image::ImageError as openColourSpace does.
    explicit InputSpace(const ChainSettings& settings);

    bool isConverting() const { return m_space != nullptr; }
    /// The configuration that the space is from; empty: the built-in one.
    const std::string& configFile() const { return m_configFile; }

    /// Converts the red, green and blue of a writable plane where it shows the picture, which fills `picture`; what
    /// lies outside is no light in any space. Channels that do not hold colour, by their names, stay; with
    /// `isDataPart` those of the main layer as well (ShadingLayers::isDataPart).
    void toSceneLinear(DD::Image::ImagePlane& plane, const DD::Image::Box& picture, unsigned int threads,
                       bool isDataPart) const;

    /// The reverse, for the whole plane.
    void fromSceneLinear(DD::Image::ImagePlane& plane, unsigned int threads, bool isDataPart) const;

    /// What stands for no light in the channel: R, G, B as the space has them, else 0.
    float black(DD::Image::Channel channel, bool isDataPart) const;

    /// Why the picture should not be corrected like this: shading is wanted, nothing was said about the pixels' space,
    /// and the picture says that they are not linear. Empty: there is no objection.
    static std::string objection(const ChainSettings& settings, const Image::Frame& frame);

    /// Whether the pixels of a frame, or of what a job makes of it, are known to be linear light, or plain numbers as
    /// those of a map: OpenEXR files hold linear light unless they state otherwise, files of other formats where they
    /// state so. A job that names another space leaves it open.
    static bool isLinear(const ChainSettings& settings, const Image::Frame& frame);

    /// Lets the frame state that it isLinear, for formats whose files are else taken as another space, in the words in
    /// which OpenImageIO's writers understand it.
    static void stateLinear(Image::Frame& frame);

private:
    std::unique_ptr<const Image::ColourSpace> m_space; ///< none: values are taken as they are
    std::string m_configFile;
    std::array<float, 3> m_black{};
};

} // namespace Tools
