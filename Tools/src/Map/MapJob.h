#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Clip/FilePattern.h"
#include "Lens/LensGeometry.h"
#include "Map/MapPicture.h"
#include "Report/JobRecord.h"

namespace Tools {

/// What to write, and where.
struct MapOptions {
    LensOptions lens;
    MapContent content;
    FilePattern output; ///< without a placeholder: one map for all frames
    bool overwrite = false;
};

/// Writes the displacement maps of the frames of a clip: one for each, or one that serves all.
class MapJob {
public:
    /// Opens what the maps are made from. Throws Failure, Image::ImageError.
    explicit MapJob(const MapOptions& options);

    const std::vector<std::int32_t>& frames() const { return m_lens.frames(); }
    bool isOneMap() const { return !m_options.output.hasFrameNumber(); }

    /// Throws Failure for what concerns every frame: a file exists already and must not be replaced; no frame at all
    /// can be corrected.
    void check();

    /// Writes the maps; a signal ends it after the map at hand. The listener hears of every frame, but for one map that
    /// serves all; when a frame fails, the others continue. Throws Failure: a file cannot be written, or one was asked
    /// for and the maps differ.
    JobResult run(const JobListener& listener);

private:
    struct Geometries {
        FrameGeometry frame;
        std::optional<FrameGeometry> opposite; ///< where the map shows both directions
    };

    Geometries geometries(std::int32_t frame);
    void write(std::int32_t frame, const Geometries& geometries) const;
    void writeOne();
    void writeFrame(std::int32_t frame, JobRecord& record);
    void checkOutputs() const;
    void checkLensData();

    const MapOptions& m_options;
    LensGeometry m_lens;
};

} // namespace Tools
