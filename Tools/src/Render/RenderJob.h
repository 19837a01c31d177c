#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Render/RenderOptions.h"
#include "Render/RenderPlan.h"
#include "Report/JobRecord.h"

namespace Tools {

/// Corrects the frames of a clip. One thread at a time; the work itself takes many.
class RenderJob {
public:
    /// Looks up the clips and lays out the frames. The options outlive the job. Throws Failure, Image::ImageError.
    explicit RenderJob(const RenderOptions& options);
    ~RenderJob();
    RenderJob(const RenderJob&) = delete;
    RenderJob& operator=(const RenderJob&) = delete;

    /// All frames of the job, in the order asked for.
    std::vector<std::int32_t> frames() const;

    /// What run would do now, with every frame's data windows. Reads headers only, writes nothing, and needs no device.
    /// What the user should know of the clip goes to the listener, as notes. Throws Failure for what concerns every
    /// frame.
    RenderPlan plan(const JobListener& listener);

    /// Corrects the frames that the plan leaves to be rendered; once. Frames are written whole or not at all; one that
    /// fails does not keep the others. The listener hears of every frame. A signal (Interruption) ends the job once the
    /// frames in flight are written. Throws Failure for what concerns every frame, before any is rendered.
    JobResult run(const JobListener& listener);

private:
    class Work;
    std::unique_ptr<Work> m_work;
};

} // namespace Tools
