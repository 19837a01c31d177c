#pragma once

#include "DDImage/ImagePlane.h"
#include "DDImage/Iop.h"
#include "DDImage/PlanarI.h"
#include "DDImage/RequestOutput.h"

namespace DD {
namespace Image {

/// An image op that renders planes. There is one stripe, the whole box of info().
///
/// renderStripe is called once per layer (see Substitute/Layers.h), with at most four channels, for the whole box. It
/// gets the caller's own plane if that has this box, these channels and the preferred packing; otherwise a temporary
/// plane, whose pixels are copied to the caller's. renderStripe may run on several threads at once.
class PlanarIop : public Iop, public PlanarI {
public:
    explicit PlanarIop(Node*);

    virtual void renderStripe(ImagePlane& plane) = 0;
    /// What the op needs from its inputs for a box: by default the same from input 0.
    virtual void getRequests(const Box& box, const ChannelSet& channels, int count, RequestOutput& reqData) const;
    PackedPreference packedPreference() const override;
    /// True: every plane has all channels of its layer.
    virtual bool renderFullPlanes() const;

    std::size_t getStripeCount() const override;
    Box getStripeBox(int stripe) const override;
    std::size_t rowToStripeIndex(int y) const override;
    PlanarI* getPlanarI() override;

    Box expandToFullTiles(const Box&) const;
    /// These channels and all others of their layers that the op has.
    ChannelSet expandChannelsToFullPlanes(const ChannelSet&);

protected:
    void _request(int x, int y, int r, int t, ChannelMask, int count) final;
    void doFetchPlane(ImagePlane&) override;
};

} // namespace Image
} // namespace DD
