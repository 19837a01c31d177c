#include "Render/RenderSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "Chain/SearchPath.h"
#include "Core/FramePreparation.h"
#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "Render/CorrectionMark.h"
#include "Report/Failure.h"

namespace Tools {
namespace {

std::string searchedCorrectionFile(const std::string& clip) {
    std::string file;
    try {
        CorrectionFile::ClipFilePathBasedFinder(clip, Core::correctionFileSearchDepth).find(file);
    } catch (const std::exception&) {
        // The frames may bring their lens data along; if they do not, the nodes say what is missing.
        return {};
    }
    return file;
}

} // namespace

RenderSource::RenderSource(const RenderOptions& options)
    : m_options(options),
      m_clip(options.clip, options.decoding),
      m_frames(frameJobs(options, m_clip.frames())),
      m_survey(m_clip, numbersOf(m_frames)),
      m_space(options) {
    if (options.plate) {
        m_plate.emplace(*options.plate, options.decoding);
        m_plateSurvey.emplace(*m_plate, std::vector<std::int32_t>());
        checkPlate();
    }
    std::vector<FrameJob> existing;
    std::copy_if(m_frames.begin(), m_frames.end(), std::back_inserter(existing),
                 [](const FrameJob& job) { return !job.input.empty(); });
    keepHeaders(checkedFrames(existing));
    m_searchPath = searchPath(lensClip(), m_plate ? *m_plateSurvey : m_survey, numbersOf(existing));
    m_correctionFile = options.correctionFile ? *options.correctionFile : searchedCorrectionFile(m_searchPath);
}

void RenderSource::checkPlate() const {
    for (const FrameJob& job : m_frames) {
        const std::optional<std::string> file = m_plate->fileOf(job.frame);
        std::error_code error;
        if (!file || !std::filesystem::equivalent(*file, job.output, error)) continue;
        refuse(fmt::format("Frame {} would replace its plate, \"{}\"; choose another output.", job.frame, job.output));
    }
}

std::string RenderSource::nameNote() const {
    const std::string note = Tools::nameNote(lensClip(), m_searchPath);
    return note.empty() ? "" : "\n" + note;
}

void RenderSource::keepHeaders(const std::vector<std::int32_t>& frames) {
    m_survey.keep(frames);
    if (m_plateSurvey) m_plateSurvey->keep(frames);
}

ClipFrame RenderSource::shown(std::int32_t frame, const Image::Frame& picture, const Image::Metadata& metadata) const {
    return {&picture, &metadata, m_clip.shownPath(frame), m_clip.range()};
}

ClipFrame RenderSource::shownPlate(std::int32_t frame, const Image::Frame& header,
                                   const Image::Metadata& metadata) const {
    return {&header, &metadata, m_plate->shownPath(frame), m_plate->range()};
}

std::string RenderSource::objection(const Image::Frame& frame) const {
    const std::string shape = m_options.pixelAspectObjection(frame);
    return shape.empty() ? InputSpace::objection(m_options, frame) : shape;
}

std::string RenderSource::objectionToFrame(const Image::Frame& frame) const {
    const std::string text = objection(frame);
    return text.empty() && !m_options.force ? CorrectionMark::objection(m_options, frame) : text;
}

std::vector<std::int32_t> numbersOf(const std::vector<FrameJob>& frames) {
    std::vector<std::int32_t> numbers;
    for (const FrameJob& job : frames) numbers.push_back(job.frame);
    return numbers;
}

std::vector<std::int32_t> checkedFrames(const std::vector<FrameJob>& frames) {
    return {frames.front().frame, frames[frames.size() / 2].frame, frames.back().frame};
}

} // namespace Tools
