#include "DDImage/PlanarI.h"

namespace DD {
namespace Image {

PlanarI::~PlanarI() = default;

Box PlanarI::getOutputBox() const {
    Box box = getStripeBox(0);
    for (std::size_t i = 1; i < getStripeCount(); ++i) box.merge(getStripeBox(static_cast<int>(i)));
    return box;
}

} // namespace Image
} // namespace DD
