#include "Render/PictureMemory.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Render/PlaneTransfer.h"

namespace Host {
namespace {

void moveMemory(HostImage::Plane& from, HostImage::Plane& to) {
    if (to.pixels.size() == 0) to.pixels = std::move(from.pixels);
}

} // namespace

void moveMemory(HostImage::Frame& from, HostImage::Frame& to) {
    for (std::size_t part = 0; part < std::min(from.parts.size(), to.parts.size()); ++part) {
        std::vector<HostImage::Plane>& source = from.parts[part].planes;
        std::vector<HostImage::Plane>& target = to.parts[part].planes;
        for (std::size_t i = 0; i < std::min(source.size(), target.size()); ++i) moveMemory(source[i], target[i]);
    }
}

PictureMemory::PictureMemory(HostImage::Part& input, HostImage::Part& output, bool isBlack)
    : m_input(input), m_output(output), m_isBlack(isBlack), m_hasMemory(output.planes.size()) {}

void PictureMemory::provideFor(const DD::Image::ImagePlane& plane, const std::vector<DD::Image::Channel>& channels) {
    const std::vector<PlaneShare> shares = planeShares(plane, m_output, channels);
    for (std::size_t i = 0; i < shares.size(); ++i) {
        if (shares[i] == PlaneShare::None || m_hasMemory[i]) continue;
        HostImage::Plane& target = m_output.planes[i];
        if (shares[i] == PlaneShare::Whole && i < m_input.planes.size()) moveMemory(m_input.planes[i], target);
        target.allocatePixels();
        if (m_isBlack) std::memset(target.pixels.data(), 0, target.pixels.size());
        m_hasMemory[i] = true;
    }
}

} // namespace Host
