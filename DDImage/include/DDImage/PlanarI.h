#pragma once

#include "DDImage/Box.h"
#include "DDImage/ChannelSet.h"

#include <cstddef>

namespace DD {
namespace Image {

/// How an op that works on whole planes packs and divides them.
class PlanarI {
public:
    typedef ChannelSet PlaneID;

    enum PackedPreference { ePackedPreferenceNone, ePackedPreferencePacked, ePackedPreferenceUnpacked };

    virtual ~PlanarI();

    virtual PackedPreference packedPreference() const = 0;
    virtual std::size_t getStripeCount() const = 0;
    virtual Box getStripeBox(int stripe) const = 0;
    virtual std::size_t rowToStripeIndex(int y) const = 0;

    /// The box of all stripes at the time of the call.
    Box getOutputBox() const;
};

} // namespace Image
} // namespace DD
