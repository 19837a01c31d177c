#include "DDImage/Box.h"

#include <algorithm>

namespace DD {
namespace Image {

void Box::merge(const Box& o) {
    set(std::min(m_x, o.m_x), std::min(m_y, o.m_y), std::max(m_r, o.m_r), std::max(m_t, o.m_t));
}

void Box::intersect(const Box& o) {
    set(std::max(m_x, o.m_x), std::max(m_y, o.m_y), std::min(m_r, o.m_r), std::min(m_t, o.m_t));
}

bool Box::intersects(const Box& o) const {
    return std::max(m_x, o.m_x) < std::min(m_r, o.m_r) && std::max(m_y, o.m_y) < std::min(m_t, o.m_t);
}

} // namespace Image
} // namespace DD
