#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Image/Frame.h"
#include "Image/InputFile.h"

namespace HostImage {

/// Decodes blocks with OpenEXR's C++ library, for the methods that its C library has not (DWAA, DWAB) or decodes at
/// half the speed (PIZ). One per thread; starts no threads.
class ImfBlockReader {
public:
    /// Throws std::exception (of the library's own kind) as all members do.
    explicit ImfBlockReader(const InputFile& file);
    ~ImfBlockReader();
    ImfBlockReader(const ImfBlockReader&) = delete;
    ImfBlockReader& operator=(const ImfBlockReader&) = delete;

    /// Fills lines window.minY … window.maxY of the part's planes (which have their memory).
    void readLines(int partIndex, Part& part, const Window& window);
    void readTile(int partIndex, Part& part, std::int32_t tileX, std::int32_t tileY);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// The compressed bytes of one block of a part: `packed` holds the window's lines, channel after channel in each, as
/// the library's C side packs them. Only for scan lines of full width and for tiles; the part's compression counts.
/// Throws std::exception.
std::vector<std::uint8_t> compressWithImf(const Part& part, const std::vector<std::size_t>& channelOrder,
                                          const std::vector<PixelType>& types, const Window& window,
                                          const std::uint8_t* packed, float dwaLevel);

} // namespace HostImage
