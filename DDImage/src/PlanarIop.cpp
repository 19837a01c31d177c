#include "DDImage/PlanarIop.h"

#include "DDImage/Substitute/Layers.h"

namespace DD {
namespace Image {

PlanarIop::PlanarIop(Node* node) : Iop(node) {}

void PlanarIop::getRequests(const Box& box, const ChannelSet& channels, int count, RequestOutput& reqData) const {
    if (inputs() > 0) reqData.request(input(0), box, channels, count);
}

PlanarI::PackedPreference PlanarIop::packedPreference() const { return ePackedPreferenceNone; }

bool PlanarIop::renderFullPlanes() const { return false; }

std::size_t PlanarIop::getStripeCount() const { return 1; }

Box PlanarIop::getStripeBox(int) const { return info_.box(); }

std::size_t PlanarIop::rowToStripeIndex(int) const { return 0; }

PlanarI* PlanarIop::getPlanarI() { return this; }

Box PlanarIop::expandToFullTiles(const Box&) const { return getOutputBox(); }

ChannelSet PlanarIop::expandChannelsToFullPlanes(const ChannelSet& channels) {
    return expandToLayers(channels, info_.channels());
}

void PlanarIop::_request(int x, int y, int r, int t, ChannelMask channels, int count) {
    RequestOutput requests;
    getRequests(Box(x, y, r, t), channels, count, requests);
    requests.doRequest();
}

void PlanarIop::doFetchPlane(ImagePlane& plane) {
    const Box box = getOutputBox();
    const bool packed =
        packedPreference() == ePackedPreferenceNone ? plane.packed() : packedPreference() == ePackedPreferencePacked;
    ChannelSet wanted = plane.channels();
    wanted &= out_channels();
    const std::vector<ChannelSet> layers =
        splitIntoLayers(renderFullPlanes() ? expandChannelsToFullPlanes(wanted) : wanted);
    const bool isOfStripesShape = plane.bounds() == box && plane.packed() == packed && layers.size() == 1 &&
                                  layers.front() == plane.channels() &&
                                  plane.nComps() == static_cast<int>(layers.front().size());
    if (isOfStripesShape) return renderStripe(plane);

    blacken(plane);
    for (const ChannelSet& layer : layers) {
        ChannelSet common = layer;
        common &= wanted;
        // The rest of a layer too large for one plane.
        if (common.empty()) continue;
        ImagePlane stripe(box, packed, layer);
        renderStripe(stripe);
        if (aborted() || hasError()) return;
        if (stripe.usage() > 0) plane.copyIntersectionFrom(stripe);
    }
}

} // namespace Image
} // namespace DD
