#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Image/Frame.h"

/// A part of the given window with these channels, filled with repeatable noise: half and float samples are finite and
/// lie mostly between 0 and 1, integers anywhere.
HostImage::Part noisePart(const HostImage::Window& window, const std::vector<HostImage::Channel>& channels);

/// A frame with one such part.
HostImage::Frame noiseFrame(const HostImage::Window& window, const std::vector<HostImage::Channel>& channels);

HostImage::Channel namedChannel(const std::string& name, HostImage::PixelType type = HostImage::PixelType::Half);

/// R, G, B, A of the type, in OpenEXR's order.
std::vector<HostImage::Channel> rgba(HostImage::PixelType type = HostImage::PixelType::Half);

/// The part's pixels, plane after plane.
std::string pixelBytes(const HostImage::Part& part);
