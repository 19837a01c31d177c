#pragma once

#include "DDImage/PlanarIop.h"
#include "DDImage/Read.h"

#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

/// A clip of one value per channel and frame: frame × 100 + channel number.
struct TestSource : DD::Image::ReadSource {
    DD::Image::Format format{4, 2};
    DD::Image::Box box{0, 0, 4, 2};
    DD::Image::ChannelSet channels = DD::Image::Mask_RGBA;
    std::function<void()> beforeEach = [] {};

    void fillInfo(double, DD::Image::IopInfo& info) override {
        beforeEach();
        info.format(format);
        info.set(box);
        info.channels(channels);
        info.first_frame(1001);
        info.last_frame(1010);
    }

    void fillMetaData(double frame, DD::Image::MetaData::Bundle& metaData) override {
        beforeEach();
        metaData.setData("input/frame", static_cast<int>(frame));
        metaData.setData("input/timecode", "01:00:00:00");
    }

    void fillPlane(double frame, DD::Image::ImagePlane& plane) override {
        beforeEach();
        if (!plane.bounds().intersects(box)) return;
        DD::Image::Box common = plane.bounds();
        common.intersect(box);
        const DD::Image::ChannelSet held = plane.channels();
        for (DD::Image::Channel z = held.first(); z != DD::Image::Chan_Black; z = held.next(z)) {
            if (!channels.contains(z)) continue;
            for (int y = common.y(); y < common.t(); ++y)
                for (int x = common.x(); x < common.r(); ++x) plane.writableAt(x, y, plane.chanNo(z)) = value(frame, z);
        }
    }

    static float value(double frame, DD::Image::Channel z) {
        return static_cast<float>(frame * 100 + static_cast<double>(z));
    }
};

/// A planar op as a plug-in writes one: passes its input on and keeps what it was asked for.
class TestOp : public DD::Image::PlanarIop {
public:
    using Knob = DD::Image::Knob;

    explicit TestOp(DD::Image::Node* node) : PlanarIop(node) { inputs(2); }

    const char* Class() const override { return d.name; }
    const char* node_help() const override { return "Keeps what it was asked for."; }

    void knobs(DD::Image::Knob_Callback f) override {
        static const char* const modes[] = {"Remove", "Add", nullptr};
        DD::Image::Enumeration_knob(f, &mode, modes, "mode", "Mode");
        DD::Image::Float_knob(f, &amount, DD::Image::IRange(0, 20), "amount", "Amount [%]");
        DD::Image::SetFlags(f, Knob::FORCE_RANGE | Knob::HIDDEN);
        DD::Image::Tooltip(f, "How much.");
        DD::Image::Int_knob(f, &count, "count", "");
        DD::Image::BeginGroup(f, "group", "Group");
        DD::Image::File_knob(f, &path, "path", "File");
        DD::Image::Bool_knob(f, &isOn, "isOn", "On");
        DD::Image::EndGroup(f);
        if (onKnobs) onKnobs(f, *this);
    }

    int knob_changed(Knob* k) override {
        changed.push_back(k);
        return onKnobChanged(k);
    }

    bool updateUI(const DD::Image::OutputContext&) override {
        ++updates;
        return wantsUpdates;
    }

    void append(DD::Image::Hash& hash) override { hash.append(salt); }

    PackedPreference packedPreference() const override { return ePackedPreferencePacked; }
    bool renderFullPlanes() const override { return true; }

    void renderStripe(DD::Image::ImagePlane& plane) override {
        input0().fetchPlane(plane);
        const std::lock_guard<std::mutex> lock(stripeAccess);
        stripes.push_back(plane);
    }

    int mode = 0;
    float amount = 5;
    int count = 0;
    const char* path = nullptr;
    bool isOn = true;
    int salt = 0;
    bool wantsUpdates = true;
    int updates = 0;
    int validations = 0;
    std::vector<Knob*> changed;
    std::mutex stripeAccess;
    std::vector<DD::Image::ImagePlane> stripes;
    std::function<int(Knob*)> onKnobChanged = [](Knob*) { return 1; };
    std::function<void(TestOp&)> onValidate = [](TestOp&) {};
    /// Also called when knobs are made, which no member of an op can be set before.
    static inline std::function<void(DD::Image::Knob_Callback, TestOp&)> onKnobs;

    using PlanarIop::info_;
    using PlanarIop::set_out_channels;

    static const DD::Image::Iop::Description d;

protected:
    void _validate(bool for_real) override {
        ++validations;
        PlanarIop::_validate(for_real);
        if (!aborted()) onValidate(*this);
    }
};

inline DD::Image::Iop* buildTestOp(DD::Image::Node* node) { return new TestOp(node); }
inline const DD::Image::Iop::Description TestOp::d("TestOp", "Test/Op", buildTestOp);
