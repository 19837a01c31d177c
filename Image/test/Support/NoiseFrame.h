#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Frame.h"

/// A part of the given window with these channels, filled with repeatable noise: half and float samples are finite and
/// lie mostly between 0 and 1, integers anywhere.
Image::Part noisePart(const Image::Window& window, const std::vector<Image::Channel>& channels);

/// A frame with one such part.
Image::Frame noiseFrame(const Image::Window& window, const std::vector<Image::Channel>& channels);

Image::Channel namedChannel(const std::string& name, Image::PixelType type = Image::PixelType::Half);

/// R, G, B, A of the type, in OpenEXR's order.
std::vector<Image::Channel> rgba(Image::PixelType type = Image::PixelType::Half);

/// The part's pixels, plane after plane.
std::string pixelBytes(const Image::Part& part);
