#pragma once

#include <string>

#include "Lens/CorrectionFileData.h"

namespace Tools {

/// Figures about what a correction file says and how well the fitted curves follow it: shading and distortion over the
/// image height and over the clip, what the inverse misses, and the grid before and after.
///
/// The same file gives the same text. Nothing in it is loaded from elsewhere, and there is no script.
class LensReport {
public:
    /// Throws Failure (WrongUse) when no frame of the file can be fitted.
    explicit LensReport(const CorrectionFileData& file);

    /// A page of its own that reads well on wide and narrow screens, light and dark, and on paper.
    const std::string& html() const { return m_html; }

    /// The figures alone, in two columns of one picture.
    const std::string& svg() const { return m_svg; }

private:
    std::string m_html;
    std::string m_svg;
};

} // namespace Tools
