#pragma once

#include "DDImage/Box.h"
#include "DDImage/ChannelSet.h"

#include <cstddef>
#include <vector>

namespace DD {
namespace Image {

class Iop;

/// One thing that an op will fetch from an input.
struct RequestData {
    Iop* op;
    Box box;
    ChannelSet channels;
    int count;
};

/// Collects what an op will fetch from its inputs, and passes it on to them.
class RequestOutput {
public:
    template <class OpType>
    void request(OpType* op, const Box& box, const ChannelSet& channels, int count) {
        m_requests.push_back({op, box, channels, count});
    }
    void doRequest();

    std::size_t size() const { return m_requests.size(); }
    const RequestData& operator[](std::size_t index) const { return m_requests[index]; }

private:
    std::vector<RequestData> m_requests;
};

} // namespace Image
} // namespace DD
