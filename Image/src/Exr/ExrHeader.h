#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Files.h"
#include "Frame.h"
#include "FrameReader.h"

namespace Image {

/// The bytes before an OpenEXR file's pixels: the version word and every part's attributes, byte for byte.
struct ExrHeader {
    std::vector<Part> parts;
    bool multiPart = false;
    /// Offset of the first chunk table.
    std::uint64_t end = 0;
};

/// Whether the file begins as OpenEXR files do.
bool isExr(const InputFile& file);

/// Reads and checks the header; nothing larger than the header itself is allocated.
/// Throws ImageError: damaged or incomplete header, beyond the limits, deep, or newer than version 2.
ExrHeader readExrHeader(const InputFile& file, const Limits& limits);

/// The header's bytes for these parts. Attributes that repeat a part's fields take the fields' values in place; missing
/// required ones are appended. `storedTypes[part][channel]` is the type each channel is stored with;
/// `chunkCounts[part]` the number of its chunks. Throws ImageError for an attribute that does not fit.
std::string composeExrHeader(const std::string& path, const std::vector<Part>& parts,
                             const std::vector<std::vector<PixelType>>& storedTypes,
                             const std::vector<std::int32_t>& chunkCounts);

/// The number OpenEXR stores for "none" (0) … "dwab" (9); -1 for anything else.
int exrCompressionNumber(const std::string& name);

/// The indices of the part's channels in the order in which OpenEXR stores them: by name, byte by byte.
std::vector<std::size_t> exrChannelOrder(const Part& part);

/// 0, 1 or 2 for UInt32, Half, Float; -1 for types that OpenEXR does not have.
int exrPixelTypeNumber(PixelType type);

/// Whether the window's corner and size are multiples of the channel's sampling, as OpenEXR demands.
bool exrSamplingFits(const Channel& channel, const Window& dataWindow);

} // namespace Image
