#pragma once

#include "DDImage/ChannelSet.h"
#include "DDImage/PlanarIop.h"

namespace Tools {

/// Joins a shading node's output with its input, channel by channel: the node shades whatever it is asked for.
///
/// Input 0 is the shading node, input 1 what goes into it. A layer that has one of the shaded channels is fetched from
/// the node, without a copy unless some of its channels are unshaded; any other layer never reaches the node.
class ShadedChannels : public DD::Image::PlanarIop {
public:
    static const DD::Image::Op::Description description;

    explicit ShadedChannels(DD::Image::Node* node);

    /// Channels in neither set come along with their layer; so does alpha, which a shading node leaves unchanged.
    void setChannels(const DD::Image::ChannelSet& shaded, const DD::Image::ChannelSet& unshaded);

    const char* Class() const override;
    const char* node_help() const override;
    void getRequests(const DD::Image::Box& box, const DD::Image::ChannelSet& channels, int count,
                     DD::Image::RequestOutput& requests) const override;
    using DD::Image::PlanarIop::renderStripe;
    void renderStripe(DD::Image::ImagePlane& plane) override;
    PackedPreference packedPreference() const override;
    bool renderFullPlanes() const override;

private:
    DD::Image::ChannelSet m_shaded;
    DD::Image::ChannelSet m_unshaded;
};

} // namespace Tools
