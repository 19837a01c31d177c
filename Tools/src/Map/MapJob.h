#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Clip/FilePattern.h"
#include "Lens/LensGeometry.h"
#include "Map/MapPicture.h"
#include "Report/ExitCode.h"

namespace Tools {

/// What to write, and where.
struct MapOptions {
    LensOptions lens;
    MapContent content;
    FilePattern output; ///< without a placeholder: one map for all frames
    bool overwrite = false;
    std::string progress = "auto";
};

/// Writes the displacement maps of the frames of a clip: one for each, or one that serves all.
class MapJob {
public:
    /// Opens what the maps are made from. Throws Failure, Image::ImageError.
    explicit MapJob(const MapOptions& options);

    /// Writes the maps and returns the program's exit status. A frame that fails is reported on the error stream and
    /// the others continue. Throws Failure: a file exists already and must not be replaced, or cannot be written; one
    /// file was asked for and the maps differ; no frame at all can be corrected.
    ExitCode run();

private:
    struct Geometries {
        FrameGeometry frame;
        std::optional<FrameGeometry> opposite; ///< where the map shows both directions
    };

    Geometries geometries(std::int32_t frame);
    void write(std::int32_t frame, const Geometries& geometries) const;
    void writeOne();
    void checkOutputs() const;
    void checkLensData();

    const MapOptions& m_options;
    LensGeometry m_lens;
};

} // namespace Tools
