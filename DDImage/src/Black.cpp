#include "DDImage/Black.h"

namespace DD {
namespace Image {

Black::Black(Node* node) : Iop(node) { inputs(0); }

const char* Black::Class() const { return "Black"; }

const char* Black::node_help() const { return "One black pixel."; }

void Black::_validate(bool) {
    info_ = Info();
    info_.channels(Mask_RGBA);
    set_out_channels(Mask_All);
}

} // namespace Image
} // namespace DD
