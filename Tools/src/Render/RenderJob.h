#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Chain/CorrectionChain.h"
#include "Chain/InputSpace.h"
#include "Clip/Clip.h"
#include "Clip/ClipSurvey.h"
#include "FrameWriter.h"
#include "Render/FinishedFrames.h"
#include "Render/FrameJob.h"
#include "Render/Queue.h"
#include "Render/RenderOptions.h"
#include "Report/ExitCode.h"
#include "Report/Progress.h"

namespace Tools {

/// Corrects the frames of a clip: decoding, rendering and encoding of different frames overlap.
///
///     frames → decoders (threads) → chain of nodes (this thread) → encoders (threads) → files
///
/// Frames travel in slots, which keep their memory from one frame to the next; there are as many as the memory limit
/// allows, so a stage that is ahead waits for a slot. The nodes run on one thread, since the OpenCL device already uses
/// every core. A frame that fails is reported and its slot continues with another frame.
class RenderJob {
public:
    /// Looks up the clips and lays out the frames. Throws Failure, Image::ImageError.
    explicit RenderJob(const RenderOptions& options);
    ~RenderJob();

    /// Runs the job and returns the program's exit status; reports to the error stream (JSON progress to the standard
    /// output). Throws Failure for what concerns every frame, before any is rendered.
    ExitCode run();

private:
    struct Slot;

    std::string outputKey(const FrameJob& job) const;
    std::vector<FrameJob> remainingJobs(Progress& progress);
    void checkOutputFormat(const FrameJob& job, const Image::Frame& input) const;
    void tellDarkPictures(Progress& progress, const Image::Frame& first) const;
    void refuseUnsupportedPictures(const std::vector<FrameJob>& jobs);
    Image::WriteOptions writeOptions() const;
    void checkBeforeTheFirstFrame(CorrectionChain& chain, const std::vector<FrameJob>& jobs);
    void keepHeaders(const std::vector<std::int32_t>& frames);
    template <typename Action>
    void forEachPart(CorrectionChain& chain, std::int32_t frame, const Image::Frame& header, Action action);
    std::string nameNote() const;
    const Clip& lensClip() const;
    void checkOutputFolder(const FrameJob& first) const;
    void findConstantBoxes();
    std::shared_ptr<const Image::Frame> headerOf(const FrameJob& job);
    std::string objection(const Image::Frame& frame) const;
    std::size_t slotCount(const Image::Frame* first, std::size_t most) const;
    void tellIrregularity(Progress& progress, const std::string& text) const;
    void surveyHeaders(Progress& progress, unsigned int threads);

    void decode(Slot& slot, unsigned int threads);
    void render(CorrectionChain& chain, Slot& slot, unsigned int threads, Progress& progress);
    void tellClipped(Progress& progress, const FrameJob& job, const DD::Image::ImagePlane& plane,
                     const Image::Part& output, unsigned int threads);
    void noteUnshaded(const Image::Frame& frame);
    DD::Image::Box fileBox(const FramePlan& plan, const PictureShape& shape) const;
    void layOut(const Image::Part& input, const DD::Image::Box& box, std::size_t part, Image::Part& output) const;
    void encode(Slot& slot, unsigned int threads, Progress& progress);
    template <typename Step>
    bool attempt(Slot& slot, Progress& progress, Step step);
    void fail(Progress& progress, const FrameJob& job, const std::string& text, bool isOutput);
    bool mustStop() const;
    unsigned int threadsEach(std::size_t frames) const;
    ExitCode finish(Progress& progress, std::size_t frames) const;

    const RenderOptions& m_options;
    unsigned int m_threads;
    Clip m_clip;
    std::optional<Clip> m_plate;
    std::vector<FrameJob> m_jobs;
    ClipSurvey m_survey;
    std::optional<ClipSurvey> m_plateSurvey;
    FinishedFrames m_finished;
    InputSpace m_inputSpace;
    std::string m_searchPath;                              ///< of the correction file
    std::string m_correctionFile;                          ///< the one found near the clip or given; empty: none
    std::map<std::size_t, DD::Image::Box> m_constantBoxes; ///< by part, when all frames of the clip share one
    std::atomic<bool> m_isStopped{false};
    std::atomic<bool> m_hasOutputFailed{false};
    std::mutex m_failedFramesAccess;
    std::vector<std::int32_t> m_failedFrames;
    std::vector<std::string> m_unshaded; ///< of all frames; belongs to the thread of the nodes, as the next one does
    bool m_hasToldClipped = false;
};

} // namespace Tools
