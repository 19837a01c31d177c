#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Clip/Clip.h"
#include "DDImage/Box.h"
#include "DDImage/Channel.h"
#include "DDImage/Substitute/ReadSource.h"
#include "Frame.h"
#include "HostMetadata.h"

namespace Tools {

/// The host's channel for each channel of a part, in the part's order; no two are the same. The host numbers channels
/// as it learns of them, and lays pixels out by these numbers: it learns of a layer's R, G, B and A in this order.
///
/// | In the file              | In the host                              |
/// |--------------------------|------------------------------------------|
/// | R, G, B, A               | rgba.red, rgba.green, …                  |
/// | Y, where there is no R   | rgba.red: a grey picture is colour       |
/// | Z                        | depth.Z                                  |
/// | L.R, L.G, L.B, L.A       | L.red, L.green, …; small letters as well |
/// | L.X                      | L.X                                      |
/// | X                        | other.X                                  |
std::vector<DD::Image::Channel> hostChannels(const Image::Part& part);

class InputSpace;

/// One decoded picture as the host's reader node shows it: a part of a frame, with the frame's metadata.
///
/// Holds references only: frame and metadata outlive it and do not change. Immutable, so any thread may ask.
class ClipSource : public DD::Image::ReadSource {
public:
    struct Settings {
        unsigned int threads = 1; ///< convert the pixels
        /// The picture shows red, green, blue and alpha whatever it holds: a map depends on its size only.
        bool isMap = false;
        const InputSpace* space = nullptr; ///< of the picture's pixels, which are shown in linear light; none: they are
        bool isDataPart = false;           ///< the main layer is not in that space (ShadingLayers::isDataPart)
        /// The picture's box, black where it has no pixels; without it the data window.
        std::optional<DD::Image::Box> box;
    };

    ClipSource(const Image::Frame& frame, std::size_t part, const Image::Metadata& metadata, ClipRange range,
               Settings settings);

    void fillInfo(double frame, DD::Image::IopInfo& info) override;
    void fillMetaData(double frame, DD::Image::MetaData::Bundle& metaData) override;
    void fillPlane(double frame, DD::Image::ImagePlane& plane) override;
    bool fillsWholePlanes() const override { return true; }

    /// The host's channel of each of the part's channels.
    const std::vector<DD::Image::Channel>& channels() const { return m_channels; }

private:
    const Image::Part& m_part;
    const Image::Metadata& m_metadata;
    ClipRange m_range;
    Settings m_settings;
    std::vector<DD::Image::Channel> m_channels;
};

} // namespace Tools
