#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Chain/LensDataOptions.h"
#include "Clip/DecodingOptions.h"
#include "Clip/FrameRange.h"

namespace CLI {
class App;
}

namespace Tools {

/// Where a command takes its frames and their lens data from.
struct LensOptions : LensDataOptions {
    std::string input;             ///< a clip; with `size` a correction file
    std::optional<PixelSize> size; ///< the frames of a correction file, looked at without their clip
    std::optional<std::string> plate;
    std::optional<FrameRange> frames;
    DecodingOptions decoding; ///< of the clip and the plate
};

/// Reads LensOptions from a command line.
class LensOptionsReader {
public:
    LensOptionsReader();
    ~LensOptionsReader();
    LensOptionsReader(const LensOptionsReader&) = delete;
    LensOptionsReader& operator=(const LensOptionsReader&) = delete;

    /// Declares the options; the reader outlives the parse.
    void declareOptions(CLI::App& app);

    /// The options of the last parse. Throws Failure (WrongUse) for what cannot be combined or is not understood.
    LensOptions read() const;

private:
    struct Texts;
    std::unique_ptr<Texts> m_texts; ///< the options as written
};

} // namespace Tools
