#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Chain/CorrectionChain.h"
#include "Chain/InputSpace.h"
#include "Clip/Clip.h"
#include "Clip/ClipSurvey.h"
#include "Render/FrameJob.h"
#include "Render/RenderOptions.h"

namespace Tools {

/// What a render job reads: the clip, the plate if the lens data come from one, and the headers that the job looks at
/// more than once.
///
/// Any thread may read and show frames; the rest belongs to one at a time.
class RenderSource {
public:
    /// Opens the clips, lays out the frames (frameJobs), and looks for the correction file. The options outlive this
    /// object. Throws Failure (WrongUse), also where a frame would replace its plate; Image::ImageError.
    explicit RenderSource(const RenderOptions& options);

    const Clip& clip() const { return m_clip; }
    /// The clip whose lens data count.
    const Clip& lensClip() const { return m_plate ? *m_plate : m_clip; }
    bool hasPlate() const { return m_plate.has_value(); }
    /// The job's frames in the order asked for; those without an input too.
    const std::vector<FrameJob>& frames() const { return m_frames; }
    /// Of the clip's pixels.
    const InputSpace& space() const { return m_space; }
    ClipSurvey& survey() { return m_survey; }

    /// The correction file found near the clip, or given; empty: none, and frames need records of their own.
    const std::string& correctionFile() const { return m_correctionFile; }
    /// A line that says under which other name the clip is searched (Tools::nameNote); empty if under its own.
    std::string nameNote() const;

    /// From now on, keeps these frames' headers of both clips once they are read.
    void keepHeaders(const std::vector<std::int32_t>& frames);

    /// A frame as a reader shows it to the nodes. All that is given must live as long as what is answered.
    ClipFrame shown(std::int32_t frame, const Image::Frame& picture, const Image::Metadata& metadata) const;
    /// Likewise the plate's; the job must have one.
    ClipFrame shownPlate(std::int32_t frame, const Image::Frame& header, const Image::Metadata& metadata) const;

    /// Sets the chain up for each part of a frame's header that the job corrects, and calls action(part). Throws
    /// Image::ImageError, and what the action throws.
    template <typename Action>
    void forEachPart(CorrectionChain& chain, std::int32_t frame, const Image::Frame& header, Action action) {
        const Image::Metadata metadata = m_clip.metadata(frame, header);
        const ClipFrame image = shown(frame, header, metadata);
        std::shared_ptr<const Image::Frame> plateHeader;
        Image::Metadata plateMetadata;
        ClipFrame plate = image;
        if (m_plate) {
            plateHeader = m_plateSurvey->header(frame);
            plateMetadata = m_plate->metadata(frame, *plateHeader);
            plate = shownPlate(frame, *plateHeader, plateMetadata);
        }
        for (std::size_t part = 0; part < m_options.partCount(header); ++part) {
            chain.setFrame(frame, image, part, plate);
            action(part);
        }
    }

    /// Why pictures like this one must not be corrected as the options say; empty: nothing speaks against it.
    std::string objection(const Image::Frame& frame) const;
    /// Likewise of this very picture, which may carry the mark of a correction.
    std::string objectionToFrame(const Image::Frame& frame) const;

private:
    void checkPlate() const;

    const RenderOptions& m_options;
    const Clip m_clip;
    std::optional<Clip> m_plate;
    const std::vector<FrameJob> m_frames;
    ClipSurvey m_survey;
    std::optional<ClipSurvey> m_plateSurvey;
    InputSpace m_space;
    std::string m_searchPath; ///< of the correction file
    std::string m_correctionFile;
};

/// The frames' numbers.
std::vector<std::int32_t> numbersOf(const std::vector<FrameJob>& frames);

/// The frames whose headers are looked at whole before the first is corrected: first, middle and last of at least one.
std::vector<std::int32_t> checkedFrames(const std::vector<FrameJob>& frames);

} // namespace Tools
