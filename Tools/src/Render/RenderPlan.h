#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "DDImage/Box.h"
#include "Frame.h"
#include "Render/FrameJob.h"

namespace Tools {

class FinishedFrames;
class RenderSource;

/// What a render job is going to do, known from files' headers alone: which frames, why, how large they become, and how
/// much memory that takes. A value.
struct RenderPlan {
    enum class State {
        Render,
        Finished, ///< by an earlier run, from the same inputs and options
        Missing,  ///< the clip has no such frame
        Refused,  ///< cannot be corrected; of a plan with windows only
    };

    struct Frame : FrameJob {
        State state = State::Render;
        std::string reason; ///< for the state, as the end of a sentence; of a refused frame a sentence
        /// The data windows of the parts in the frame's file; empty: not worked out.
        std::vector<Image::Window> windows;
    };

    std::string clip, output;   ///< as patterns
    std::string correctionFile; ///< empty: none was found
    std::vector<Frame> frames;  ///< in the order asked for
    /// By part, the least that each frame's file holds, where all frames of the clip share one data window.
    std::map<std::size_t, DD::Image::Box> constantBoxes;

    /// Everything that all frames are made from, as text.
    std::string basis;

    unsigned int threads = 1;        ///< of the job
    std::size_t decoders = 1;        ///< threads that decode a frame each
    std::size_t encoders = 1;        ///< likewise
    std::size_t slots = 1;           ///< frames on the way at once
    std::uint64_t bytesPerSlot = 0;  ///< for one of those
    std::uint64_t bytesToRender = 0; ///< beside them

    /// The frames to render, in the order asked for.
    std::vector<FrameJob> remaining() const;
    /// The box of a part's file, where the frame itself needs `box`.
    DD::Image::Box fileBox(std::size_t part, DD::Image::Box box) const;
    std::size_t count(State state) const;

    /// For a person; frames of which the same is to be said share a line.
    std::string text() const;
    /// By Docs/schemas/render.json.
    nlohmann::ordered_json json() const;
};

/// Plans the job that the options describe. Reads headers: those that the job looks at first, and those of the whole
/// clip where all frames share a data window. What the user should know of the clip goes to `note`.
///
/// Throws Failure for what concerns every frame: gaps that the options do not allow, pictures that cannot be read,
/// corrected as asked, or held by the output's format.
RenderPlan planRender(const RenderOptions& options, RenderSource& source, const FinishedFrames& finished,
                      const std::function<void(const std::string&)>& note);

/// Stands for everything that a frame is made from, its files as they are now (see FinishedFrames). Any thread.
std::string keyOf(const FrameJob& frame, const RenderPlan& plan, const RenderSource& source);

/// Works out, from the frames' headers, the data windows of those that are to be rendered, and which of them cannot be
/// corrected.
void addWindows(const RenderOptions& options, RenderSource& source, RenderPlan& plan);

/// Reads the headers that the job's frames have and were not read so far, on so many threads, and tells what changes
/// from frame to frame and what of the files is not read. Throws Failure where the options do not allow a change.
void surveyFrames(const RenderOptions& options, RenderSource& source, unsigned int threads,
                  const std::function<bool()>& mustStop, const std::function<void(const std::string&)>& note);

} // namespace Tools
