#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Files.h"
#include "Frame.h"

namespace Image {

/// Decodes blocks with OpenEXR's C++ library, for the methods that its C library lacks (DWAA, DWAB) or decodes at half
/// the speed (PIZ). One per thread; starts no threads.
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

/// Blocks as the library stores them, one after the other.
struct CompressedBlocks {
    std::vector<std::uint8_t> bytes;
    struct Block {
        std::size_t begin = 0; ///< in `bytes`
        std::size_t size = 0;
    };
    std::vector<Block> blocks;
};

/// Compresses a window of a part's pixels with OpenEXR's C++ library: one tile, or lines of full width, of which the
/// first begins a block; the more blocks at once, the less often the library repeats its setup. `compressed` is
/// replaced; its memory is reused. Throws std::exception.
void compressWithImf(const Part& part, const Window& window, const std::string& compression, float dwaLevel,
                     CompressedBlocks& compressed);

} // namespace Image
