#include "Chain/ShadedChannels.h"

#include "DDImage/ImagePlane.h"
#include "DDImage/RequestOutput.h"

namespace Tools {
namespace {

using DD::Image::ChannelSet;

DD::Image::Op* build(DD::Image::Node* node) { return new ShadedChannels(node); }

ChannelSet common(ChannelSet channels, const ChannelSet& others) {
    channels &= others;
    return channels;
}

} // namespace

const DD::Image::Op::Description ShadedChannels::description("ShadedChannels", build);

ShadedChannels::ShadedChannels(DD::Image::Node* node) : DD::Image::PlanarIop(node) { inputs(2); }

void ShadedChannels::setChannels(const ChannelSet& shaded, const ChannelSet& unshaded) {
    m_shaded = shaded;
    m_unshaded = unshaded;
}

const char* ShadedChannels::Class() const { return description.name; }

const char* ShadedChannels::node_help() const { return "Joins shaded channels with those that stay as they are."; }

void ShadedChannels::getRequests(const DD::Image::Box& box, const ChannelSet& channels, int count,
                                 DD::Image::RequestOutput& requests) const {
    requests.request(input(0), box, channels, count);
    requests.request(input(1), box, common(channels, m_unshaded), count);
}

void ShadedChannels::renderStripe(DD::Image::ImagePlane& plane) {
    if (common(plane.channels(), m_shaded).empty()) return input(1)->fetchPlane(plane);
    input(0)->fetchPlane(plane);
    const ChannelSet unshaded = common(plane.channels(), m_unshaded);
    if (unshaded.empty() || aborted() || hasError() || plane.usage() == 0) return;
    DD::Image::ImagePlane original(plane.bounds(), plane.packed(), unshaded);
    input(1)->fetchPlane(original);
    if (aborted() || hasError() || original.usage() == 0) return;
    plane.makeUnique();
    plane.makeWritable();
    plane.copyIntersectionFrom(original);
}

DD::Image::PlanarI::PackedPreference ShadedChannels::packedPreference() const { return ePackedPreferencePacked; }

bool ShadedChannels::renderFullPlanes() const { return true; }

} // namespace Tools
