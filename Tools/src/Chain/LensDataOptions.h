#pragma once

#include <optional>
#include <string>

#include "Report/Dimensions.h"

namespace CLI {
class App;
}

namespace Image {
struct Frame;
}

namespace Tools {

/// Settings for a clip's lens data and frames; what is not set is worked out.
struct LensDataOptions {
    std::optional<std::string> correctionFile; ///< instead of the one found near the clip
    std::optional<MillimetreSize> imageArea;   ///< both or neither of these two: a manual recording format
    std::optional<PixelSize> clipResolution;
    std::optional<float> overscan;   ///< percent, inside the format; without it the data window is the overscan
    bool ignoresPixelAspect = false; ///< correct pictures whose pixels are not square as if they were

    /// Why the picture does not fit the lens's model, which is radial in square pixels; empty: it does.
    std::string pixelAspectObjection(const Image::Frame& frame) const;
};

/// Reads LensDataOptions from a command line.
class LensDataOptionsReader {
public:
    /// Declares the options; the reader outlives the parse.
    void declareOptions(CLI::App& app);

    /// The options of the last parse. Throws Failure (WrongUse) for what cannot be combined, is not understood, or is
    /// beyond the nodes' controls.
    LensDataOptions read() const;

private:
    std::string m_correctionFile, m_imageArea, m_clipResolution, m_pixelAspect; ///< as written; empty: not given
    std::optional<float> m_overscan;
};

} // namespace Tools
