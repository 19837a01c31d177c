#pragma once

#include <string>

#include "Chain/ChainSettings.h"
#include "Frame.h"

namespace Tools {

/// The mark that a corrected picture carries: text attributes that say what was done last, by which version, and from
/// which correction file.
///
///     com.orvex.lenscorrect.distortion       "undistort" or "distort"
///     com.orvex.lenscorrect.shading          "remove" or "add"
///     com.orvex.lenscorrect.inputSpace       "LogC3", "raw"; absent when the pixels were taken as linear light
///     com.orvex.lenscorrect.unshaded         the part's layers and channels that the shading correction left
///                                            unchanged, such as "N, crypto00, Z"; absent when there are none
///     com.orvex.lenscorrect.correctionFile   path; absent when the lens data came with the frame
///     com.orvex.lenscorrect.version          the version of lenscorrect
class CorrectionMark {
public:
    /// Writes the mark for a job into every part, replacing what an earlier job left of the same kind.
    static void write(const ChainSettings& settings, const std::string& correctionFile, Image::Frame& frame);

    /// Why the frame should not be corrected like this: it is already marked with the same correction. Empty if it is
    /// not; the opposite direction is always allowed, since that is how a lens is applied again.
    static std::string objection(const ChainSettings& settings, const Image::Frame& frame);
};

} // namespace Tools
