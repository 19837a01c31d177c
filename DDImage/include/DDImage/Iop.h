#pragma once

#include "DDImage/ImagePlane.h"
#include "DDImage/IopInfo.h"
#include "DDImage/Op.h"

namespace DD {
namespace Image {

class PlanarI;

/// Holds an image's info. Valid only after validation.
class IopInfoOwner {
public:
    typedef IopInfo Info;

    const Info& info() const { return info_; }

    int x() const { return info_.x(); }
    int y() const { return info_.y(); }
    int r() const { return info_.r(); }
    int t() const { return info_.t(); }
    int w() const { return info_.w(); }
    int h() const { return info_.h(); }
    const Format& format() const { return info_.format(); }
    const Format& full_size_format() const { return info_.full_size_format(); }
    ChannelMask channels() const { return info_.channels(); }
    int first_frame() const { return info_.first_frame(); }
    int last_frame() const { return info_.last_frame(); }
    bool black_outside() const { return info_.black_outside(); }

protected:
    ~IopInfoOwner() = default;

    Info info_;
};

/// An op that produces an image. By default it passes input 0 through unchanged.
class Iop : public Op, public IopInfoOwner {
public:
    /// One input.
    explicit Iop(Node*);

    /// Accepts images only.
    bool test_input(int input, Op*) const override;
    Op* default_input(int input) const override;
    /// The black image that stands in for every unconnected image input: one object for all.
    static Iop* default_input(const OutputContext&);

    /// Never null for an existing input.
    Iop* input(int n) const;
    Iop& input0() const { return *input(0); }
    Iop& input1() const { return *input(1); }

    /// Announces what will be fetched.
    void request(int x, int y, int r, int t, ChannelMask, int count);
    void request(const Box&, ChannelMask, int count);
    void request(ChannelMask, int count);

    /// Fills the plane's box and channels in its packing, black where the image has no pixels or no such channel. Other
    /// planes may share its floats afterwards. If aborted or in error, the plane is unchanged or partly filled.
    void fetchPlane(ImagePlane&);

    ChannelMask out_channels() const { return m_outChannels; }

    Iop* iop() { return this; }
    virtual PlanarI* getPlanarI() { return nullptr; }

protected:
    /// Validates the connected inputs, copies the info of input 0, and outputs all channels.
    void _validate(bool for_real) override;
    virtual void _request(int x, int y, int r, int t, ChannelMask, int count);
    virtual void doFetchPlane(ImagePlane&);

    /// Validates an input and copies its info.
    void copy_info(int n = 0);
    void set_out_channels(ChannelMask channels) { m_outChannels = channels; }
    /// Substitute only: makes the plane black and writable, with floats of its own.
    static void blacken(ImagePlane&);

private:
    ChannelSet m_outChannels;
};

} // namespace Image
} // namespace DD
