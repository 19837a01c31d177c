#pragma once

#include "DDImage/ImagePlane.h"
#include "DDImage/IopInfo.h"
#include "DDImage/Op.h"

namespace DD {
namespace Image {

class PlanarI;

/// Holds an image's info. To be trusted after validation only.
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

/// An op that makes an image. By itself it passes its input 0 on unchanged.
class Iop : public Op, public IopInfoOwner {
public:
    /// One input.
    explicit Iop(Node*);

    /// Images only.
    bool test_input(int input, Op*) const override;
    Op* default_input(int input) const override;
    /// The black image that stands in for every image input where nothing is wired: one object, the same for all.
    static Iop* default_input(const OutputContext&);

    /// Never null for an input that there is.
    Iop* input(int n) const;
    Iop& input0() const { return *input(0); }
    Iop& input1() const { return *input(1); }

    /// Announces what will be fetched.
    void request(int x, int y, int r, int t, ChannelMask, int count);
    void request(const Box&, ChannelMask, int count);
    void request(ChannelMask, int count);

    /// Fills the plane for its own box, channels and packing, black where there are no pixels or no such channel. Its
    /// floats may afterwards be shared with others. Aborted or in error: the plane is left as it is, or half done.
    void fetchPlane(ImagePlane&);

    ChannelMask out_channels() const { return m_outChannels; }

    Iop* iop() { return this; }
    virtual PlanarI* getPlanarI() { return nullptr; }

protected:
    /// Validates the wired inputs, takes over the info of input 0, and puts out all channels.
    void _validate(bool for_real) override;
    virtual void _request(int x, int y, int r, int t, ChannelMask, int count);
    virtual void doFetchPlane(ImagePlane&);

    /// Takes over the info of an input, which is validated.
    void copy_info(int n = 0);
    void set_out_channels(ChannelMask channels) { m_outChannels = channels; }
    /// Substitute only: makes the plane black and writable, with floats of its own.
    static void blacken(ImagePlane&);

private:
    ChannelSet m_outChannels;
};

} // namespace Image
} // namespace DD
