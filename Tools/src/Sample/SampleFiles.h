#pragma once

#include <functional>
#include <string>

#include "Frame.h"
#include "Sample/SampleClip.h"

namespace Tools {

/// The sample clip as files: plate.%04d.exr and clean.%04d.exr (half floats, ZIP), plate.olcf and README.md.
class SampleFiles {
public:
    SampleFiles(const SampleClip& clip, PixelSize size, const std::string& folder);

    std::string platePath(std::int32_t index) const;
    std::string cleanPath(std::int32_t index) const;

    /// Each writes its files whole or not at all, replacing earlier ones. Throws Failure (Output) or ImageError.
    void writeCorrectionFile() const;
    void writeReadme() const;
    void writePlate(std::int32_t index) const;
    void writeClean(std::int32_t index) const;

    /// The frame with its metadata: timecode word, reel and clip name, rate, camera and lens.
    Image::Frame frame(std::int32_t index, const std::string& clipName, const std::vector<float>& pixels) const;

    /// What the clip is, and the derivation of the error bound.
    std::string readme() const;

private:
    const SampleClip& m_clip;
    PixelSize m_size;
    std::string m_folder;
};

} // namespace Tools
