#pragma once

#include "DDImage/Box.h"
#include "DDImage/ChannelSet.h"

#include <cstddef>

namespace DD {
namespace Image {

/// What an op that works on whole planes tells about them.
class PlanarI {
public:
    typedef ChannelSet PlaneID;

    enum PackedPreference { ePackedPreferenceNone, ePackedPreferencePacked, ePackedPreferenceUnpacked };

    virtual ~PlanarI();

    virtual PackedPreference packedPreference() const = 0;
    virtual std::size_t getStripeCount() const = 0;
    virtual Box getStripeBox(int stripe) const = 0;
    virtual std::size_t rowToStripeIndex(int y) const = 0;

    /// The box of all stripes, as things stand at the moment of the call.
    Box getOutputBox() const;
};

} // namespace Image
} // namespace DD
