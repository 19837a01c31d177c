#include "DDImage/RequestOutput.h"

#include "DDImage/Iop.h"

namespace DD {
namespace Image {

void RequestOutput::doRequest() {
    for (const RequestData& request : m_requests)
        if (request.op) request.op->request(request.box, request.channels, request.count);
}

} // namespace Image
} // namespace DD
