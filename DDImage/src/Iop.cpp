#include "DDImage/Iop.h"

#include "DDImage/Black.h"

namespace DD {
namespace Image {

Iop::Iop(Node* node) : Op(node) { inputs(1); }

bool Iop::test_input(int, Op* op) const { return dynamic_cast<Iop*>(op) != nullptr; }

Op* Iop::default_input(int) const { return default_input(outputContext()); }

Iop* Iop::default_input(const OutputContext&) {
    static Black& black = []() -> Black& {
        Black& made = *new Black(nullptr);
        made.validate();
        return made;
    }();
    return &black;
}

Iop* Iop::input(int n) const { return dynamic_cast<Iop*>(Op::input(n)); }

void Iop::request(int x, int y, int r, int t, ChannelMask channels, int count) {
    _request(x, y, r, t, channels, count);
}

void Iop::request(const Box& box, ChannelMask channels, int count) {
    _request(box.x(), box.y(), box.r(), box.t(), channels, count);
}

void Iop::request(ChannelMask channels, int count) { request(info_.box(), channels, count); }

void Iop::fetchPlane(ImagePlane& plane) {
    if (!aborted() && !hasError()) doFetchPlane(plane);
}

void Iop::_validate(bool for_real) {
    Op::_validate(for_real);
    if (inputs() > 0) copy_info();
    set_out_channels(Mask_All);
}

void Iop::_request(int x, int y, int r, int t, ChannelMask channels, int count) {
    if (Iop* op = input(0)) op->request(x, y, r, t, channels, count);
}

void Iop::doFetchPlane(ImagePlane& plane) {
    if (Iop* op = input(0)) return op->fetchPlane(plane);
    blacken(plane);
}

void Iop::copy_info(int n) {
    Iop* op = input(n);
    if (!op) return;
    op->validate();
    info_ = op->info();
}

void Iop::blacken(ImagePlane& plane) {
    // Floats that others read as well are left to them.
    if (plane.memory().refCount() == 1) return plane.clear();
    RefCountedFloatBuffer none;
    plane.setMemory(none);
    plane.makeWritable();
}

} // namespace Image
} // namespace DD
