#include "Render/PictureMemory.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Chain/PlaneTransfer.h"

namespace Tools {
namespace {

void moveMemory(Image::Plane& from, Image::Plane& to) {
    if (to.pixels.size() == 0) to.pixels = std::move(from.pixels);
}

} // namespace

void moveMemory(Image::Frame& from, Image::Frame& to) {
    for (std::size_t part = 0; part < std::min(from.parts.size(), to.parts.size()); ++part) {
        std::vector<Image::Plane>& source = from.parts[part].planes;
        std::vector<Image::Plane>& target = to.parts[part].planes;
        for (std::size_t i = 0; i < std::min(source.size(), target.size()); ++i) moveMemory(source[i], target[i]);
    }
}

PictureMemory::PictureMemory(Image::Part& input, Image::Part& output, bool isBlack, const InputSpace& space,
                             bool isDataPart)
    : m_input(input),
      m_output(output),
      m_isBlack(isBlack),
      m_space(space),
      m_isDataPart(isDataPart),
      m_hasMemory(output.planes.size()) {}

void PictureMemory::provideFor(const DD::Image::ImagePlane& plane, const std::vector<DD::Image::Channel>& channels) {
    const std::vector<PlaneShare> shares = planeShares(plane, m_output, channels);
    for (std::size_t i = 0; i < shares.size(); ++i) {
        if (shares[i] == PlaneShare::None || m_hasMemory[i]) continue;
        Image::Plane& target = m_output.planes[i];
        if (shares[i] == PlaneShare::Whole && hasSameChannels(i)) moveMemory(m_input.planes[i], target);
        target.allocatePixels();
        if (m_isBlack) blacken(i, channels);
        m_hasMemory[i] = true;
    }
}

/// Whether nothing but what goes into the output's plane comes from the input's plane of that number: where files store
/// another type, channels can be divided differently.
bool PictureMemory::hasSameChannels(std::size_t index) const {
    return index < m_input.planes.size() &&
           std::equal(m_input.channels.begin(), m_input.channels.end(), m_output.channels.begin(),
                      m_output.channels.end(), [index](const Image::Channel& from, const Image::Channel& to) {
                          return from.name == to.name && (from.plane == index) == (to.plane == index);
                      });
}

void PictureMemory::blacken(std::size_t index, const std::vector<DD::Image::Channel>& channels) {
    Image::Plane& target = m_output.planes[index];
    if (!m_space.isConverting()) {
        std::memset(target.pixels.data(), 0, target.pixels.size());
        return;
    }
    std::vector<float> row(target.width * target.components);
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        if (m_output.channels[channel].plane != index) continue;
        const float black = m_space.black(channels[channel], m_isDataPart);
        for (std::size_t i = m_output.channels[channel].component; i < row.size(); i += target.components)
            row[i] = black;
    }
    for (std::size_t y = 0; y < target.height; ++y) target.rowFromFloat(y, row.data());
}

} // namespace Tools
