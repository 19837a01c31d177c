#include "DDImage/OutputContext.h"

namespace DD {
namespace Image {

void OutputContext::append(Hash& hash) const {
    hash.append(m_frame);
    hash.append(m_view);
}

const OutputContext& OutputContext::defaultContext() {
    static const OutputContext context;
    return context;
}

} // namespace Image
} // namespace DD
