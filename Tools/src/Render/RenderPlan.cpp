#include "Render/RenderPlan.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "Clip/FrameRange.h"
#include "FrameReader.h"
#include "ImageError.h"
#include "MetadataSidecar.h"
#include "Render/FinishedFrames.h"
#include "Render/OutputLayout.h"
#include "Render/RenderSource.h"
#include "Report/Dimensions.h"
#include "Report/Failure.h"
#include "Report/PrintableText.h"
#include "StillFormat.h"
#include "System/Interruption.h"

namespace Tools {
namespace {

using nlohmann::ordered_json;

/// A mistake in the sequence, perhaps; nothing for an empty text.
void tellIrregularity(const RenderOptions& options, const std::function<void(const std::string&)>& note,
                      const std::string& text) {
    if (text.empty()) return;
    if (!options.strict) return note(text);
    refuse(fmt::format("{}\nRepair the clip, name the frames with --frames, or omit --strict.", text));
}

std::uint64_t halfOfTheMemory() {
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGE_SIZE)) / 2;
}

class Planner {
public:
    Planner(const RenderOptions& options, RenderSource& source, const FinishedFrames& finished,
            const std::function<void(const std::string&)>& note)
        : m_options(options), m_source(source), m_finished(finished), m_note(note) {}

    RenderPlan plan() {
        m_plan.clip = m_source.clip().files().pattern.string();
        m_plan.output = m_options.output.string();
        m_plan.correctionFile = m_source.correctionFile();
        m_plan.threads = m_options.threads != 0 ? m_options.threads : std::max(1u, std::thread::hardware_concurrency());
        tellGaps();
        if (m_options.boxSize == RenderOptions::BoxSize::Constant && m_options.window == RenderOptions::Window::Box)
            findConstantBoxes();
        setBasis();
        for (const FrameJob& job : m_source.frames()) addFrame(job);
        const std::vector<FrameJob> remaining = m_plan.remaining();
        if (!remaining.empty()) lookAtHeaders(remaining);
        return std::move(m_plan);
    }

private:
    void tellGaps() const {
        const std::vector<std::int32_t> frames = numbersOf(m_source.frames());
        tellIrregularity(m_options, m_note, missingFrames(m_source.clip(), frames, m_options.frames.has_value()));
        // Of a plate, only what the job needs counts: it may be longer than the clip.
        if (m_source.hasPlate()) tellIrregularity(m_options, m_note, missingFrames(m_source.lensClip(), frames, true));
    }

    /// Of all frames of the clip, whichever this job renders: so all get the same box on a farm, where each task
    /// renders some of them, and when a few are rendered again.
    void findConstantBoxes() {
        CorrectionChain chain(m_options, 1);
        const auto add = [&](std::int32_t frame, const Image::Frame& header) {
            try {
                m_source.forEachPart(chain, frame, header, [&](std::size_t part) {
                    const DD::Image::Box box = m_layout.fileBox(chain.plan(), chain.shape());
                    m_plan.constantBoxes.emplace(part, box).first->second.merge(box);
                });
            } catch (const std::exception&) {
                // Such a frame is told about when its turn comes; it has no say in the box.
            }
        };
        m_source.survey().read(m_source.clip().frameNumbers(), m_plan.threads, Interruption::requested, add);
    }

    void addFrame(const FrameJob& job) {
        RenderPlan::Frame frame{job, RenderPlan::State::Render, "no file yet", {}};
        if (job.input.empty()) {
            frame.state = RenderPlan::State::Missing;
            frame.reason = "The clip \"" + m_plan.clip + "\" has no such frame.";
        } else if (m_options.skipExisting) {
            decide(frame);
        } else if (std::error_code error; m_options.overwrite && std::filesystem::exists(job.output, error)) {
            frame.reason = "replaces the file";
        }
        m_plan.frames.push_back(std::move(frame));
    }

    void decide(RenderPlan::Frame& frame) const {
        using State = FinishedFrames::State;
        switch (m_finished.stateOf(frame.output, keyOf(frame, m_plan, m_source))) {
            case State::Missing:
                break;
            case State::Finished:
                frame.state = RenderPlan::State::Finished;
                frame.reason = "made from the same inputs with the same options";
                break;
            case State::Outdated:
                frame.reason = "the file was made from other inputs or with other options";
                break;
            case State::Unknown:
                frame.reason = "the file was changed, or not written by such a job";
                break;
        }
    }

    void setBasis() {
        const auto sidecar = [&](const std::string& clip) {
            return FinishedFrames::identity(Image::MetadataSidecar::pathFor(clip));
        };
        const auto sizeText = [](const auto& size) {
            return size ? fmt::format("{}x{}", size->width, size->height) : std::string("-");
        };
        const auto add = [&](const char* name, const auto& value) {
            m_plan.basis += fmt::format("{}: {}\n", name, value);
        };
        add("version", ORVEX_VERSION);
        add("sidecar", sidecar(m_options.clip));
        if (m_options.plate) add("plate's sidecar", sidecar(*m_options.plate));
        if (!m_plan.correctionFile.empty()) add("correction file", FinishedFrames::identity(m_plan.correctionFile));
        add("image area", sizeText(m_options.imageArea));
        add("clip resolution", sizeText(m_options.clipResolution));
        add("overscan", m_options.overscan.value_or(-1.0f));
        add("pixel aspect ignored", m_options.ignoresPixelAspect);
        add("distortion", static_cast<int>(m_options.distortion));
        add("shading", static_cast<int>(m_options.shading));
        add("shading layers", m_options.shadingLayers.string());
        add("map", m_options.renderMap);
        add("input space", m_options.inputSpace.value_or("-"));
        if (m_source.space().isConverting())
            add("colour configuration", FinishedFrames::identity(m_source.space().configFile()));
        add("type", m_options.pixelType ? static_cast<int>(*m_options.pixelType) : -1);
        add("compression", m_options.compression.value_or("-"));
        add("zip", static_cast<int>(m_options.zip));
        add("window", static_cast<int>(m_options.window));
        add("size", static_cast<int>(m_options.boxSize));
        for (const auto& [part, box] : m_plan.constantBoxes)
            add("box", fmt::format("{} {} {} {} {}", part, box.x(), box.y(), box.r(), box.t()));
    }

    /// What holds for a whole clip is one message, not one for each of a thousand frames.
    void lookAtHeaders(const std::vector<FrameJob>& jobs) {
        // Fewer than all if some are finished; which ones those are depends on the boxes.
        m_source.keepHeaders(checkedFrames(jobs));
        refuseUnsupportedPictures(jobs);
        const std::shared_ptr<const Image::Frame> first = headerOf(jobs.front());
        if (first) {
            m_layout.check(*first);
            if (const std::string text = m_source.objection(*first); !text.empty())
                refuse(fmt::format("Frame {} ({}): {}", jobs.front().frame, jobs.front().input, text));
            tellDarkPictures(*first);
        }
        setMemory(first.get(), jobs.size());
    }

    /// A clip of nothing but pictures that are never read is input that is not usable, and no frame's own trouble.
    void refuseUnsupportedPictures(const std::vector<FrameJob>& jobs) {
        std::string text;
        for (const FrameJob& job : jobs) {
            try {
                m_source.survey().header(job.frame);
                return;
            } catch (const Image::UnsupportedImage& error) {
                if (text.empty()) text = error.what();
            } catch (const Image::ImageError&) {
                return;
            }
        }
        refuse(text);
    }

    /// Nothing for a frame that cannot be read: that is told when its turn comes.
    std::shared_ptr<const Image::Frame> headerOf(const FrameJob& job) {
        try {
            return m_source.survey().header(job.frame);
        } catch (const Image::ImageError&) {
            return nullptr;
        }
    }

    void setMemory(const Image::Frame* first, std::size_t frames) {
        m_plan.decoders = std::min<std::size_t>(std::max(1u, m_plan.threads / 2), frames);
        m_plan.encoders = std::min<std::size_t>(m_plan.threads, frames);
        m_plan.slots = m_plan.decoders + m_plan.encoders;
        if (!first) return;
        const OutputLayout::FrameSize size = m_layout.sizeOf(*first);
        // The picture before and after, with room for growth and for the packed file; beside the slots one layer is
        // rendered: plane, node's output, the device's two buffers.
        m_plan.bytesPerSlot = size.before + size.after * 2 + 1;
        m_plan.bytesToRender = size.asFloats * 5;
        const std::uint64_t limit = m_options.memory != 0 ? m_options.memory : halfOfTheMemory();
        const std::uint64_t forSlots = limit > m_plan.bytesToRender ? limit - m_plan.bytesToRender : 0;
        m_plan.slots =
            static_cast<std::size_t>(std::clamp<std::uint64_t>(forSlots / m_plan.bytesPerSlot, 1, m_plan.slots));
    }

    void tellDarkPictures(const Image::Frame& first) const {
        if (m_options.isOutputWithDataWindow() || m_options.renderMap || !InputSpace::isLinear(m_options, first))
            return;
        const Image::StillFormat& format = Image::StillFormat::of(m_options.output.string());
        if (format.hasLinearLight) return;
        m_note(fmt::format(
            "The pixels of the clip \"{}\" are linear light, which {} files cannot state: viewers will show them "
            "too dark. Choose {}, or convert the frames to sRGB afterwards.",
            m_options.clip, format.name, format.wider));
    }

    const RenderOptions& m_options;
    RenderSource& m_source;
    const FinishedFrames& m_finished;
    const std::function<void(const std::string&)>& m_note;
    const OutputLayout m_layout{m_options};
    RenderPlan m_plan;
};

const char* word(RenderPlan::State state) {
    switch (state) {
        case RenderPlan::State::Render:
            return "render";
        case RenderPlan::State::Finished:
            return "finished";
        case RenderPlan::State::Missing:
            return "missing";
        case RenderPlan::State::Refused:
            return "refused";
    }
    return "";
}

/// What is to be said of a frame, without its number.
std::string description(const RenderPlan::Frame& frame) {
    std::string text = word(frame.state);
    const char* separator = "  ";
    for (const Image::Window& window : frame.windows) {
        text += fmt::format("{}{} x {} px from {},{}", separator, window.width(), window.height(), window.minX,
                            window.minY);
        separator = " + ";
    }
    return fmt::format("{}  {}", text, frame.reason);
}

} // namespace

std::vector<FrameJob> RenderPlan::remaining() const {
    std::vector<FrameJob> remaining;
    std::copy_if(frames.begin(), frames.end(), std::back_inserter(remaining),
                 [](const Frame& frame) { return frame.state == State::Render; });
    return remaining;
}

DD::Image::Box RenderPlan::fileBox(std::size_t part, DD::Image::Box box) const {
    if (const auto constant = constantBoxes.find(part); constant != constantBoxes.end()) box.merge(constant->second);
    return box;
}

std::size_t RenderPlan::count(State state) const {
    return static_cast<std::size_t>(
        std::count_if(frames.begin(), frames.end(), [state](const Frame& frame) { return frame.state == state; }));
}

std::string RenderPlan::text() const {
    std::string counts;
    for (const State state : {State::Render, State::Finished, State::Missing, State::Refused})
        if (const std::size_t number = count(state))
            counts += fmt::format("{}{} {}", counts.empty() ? "" : ", ", number, word(state));
    std::string text = fmt::format(
        "Clip:             {}\n"
        "Correction file:  {}\n"
        "Output:           {}\n"
        "Frames:           {}\n",
        clip, correctionFile.empty() ? "none found; frames need records of their own" : correctionFile, output, counts);
    if (bytesPerSlot != 0) // known
        text += fmt::format("Memory:           {}: {} at once, {} each; {} to render\n",
                            memorySizeText(slots * bytesPerSlot + bytesToRender), counted(slots, "frame"),
                            memorySizeText(bytesPerSlot), memorySizeText(bytesToRender));
    text += fmt::format("Threads:          {}\n\n", threads);
    std::vector<std::pair<std::string, std::vector<std::int32_t>>> lines;
    std::map<std::string, std::size_t> lineOf;
    for (const Frame& frame : frames) {
        const std::string what = description(frame);
        const auto [line, isNew] = lineOf.emplace(what, lines.size());
        if (isNew) lines.push_back({what, {}});
        lines[line->second].second.push_back(frame.frame);
    }
    for (const auto& [what, numbers] : lines) text += fmt::format("{}  {}\n", FrameRange::string(numbers), what);
    return text;
}

ordered_json RenderPlan::json() const {
    ordered_json list = ordered_json::array();
    for (const Frame& frame : frames) {
        ordered_json entry = {{"frame", frame.frame}, {"state", word(frame.state)}, {"reason", frame.reason}};
        if (!frame.input.empty()) entry["input"] = frame.input;
        entry["output"] = frame.output;
        for (const Image::Window& window : frame.windows)
            entry["dataWindows"].push_back(
                {{"x", window.minX}, {"y", window.minY}, {"width", window.width()}, {"height", window.height()}});
        list.push_back(std::move(entry));
    }
    ordered_json file = nullptr;
    if (!correctionFile.empty()) file = correctionFile;
    return {{"version", 1},
            {"clip", clip},
            {"correctionFile", std::move(file)},
            {"output", output},
            {"threads", threads},
            {"framesAtOnce", slots},
            {"bytes", slots * bytesPerSlot + bytesToRender},
            {"frames", std::move(list)}};
}

RenderPlan planRender(const RenderOptions& options, RenderSource& source, const FinishedFrames& finished,
                      const std::function<void(const std::string&)>& note) {
    return Planner(options, source, finished, note).plan();
}

std::string keyOf(const FrameJob& frame, const RenderPlan& plan, const RenderSource& source) {
    std::string text =
        fmt::format("{}frame: {}\ninput: {}\n", plan.basis, frame.frame, FinishedFrames::identity(frame.input));
    if (source.hasPlate()) {
        const std::string plate = source.lensClip().fileOf(frame.frame).value_or("missing");
        text += fmt::format("plate: {}\n", FinishedFrames::identity(plate));
    }
    return FinishedFrames::fingerprint(text);
}

void addWindows(const RenderOptions& options, RenderSource& source, RenderPlan& plan) {
    const OutputLayout layout(options);
    CorrectionChain chain(options, 1);
    std::map<std::int32_t, RenderPlan::Frame*> remaining;
    for (RenderPlan::Frame& frame : plan.frames)
        if (frame.state == RenderPlan::State::Render) remaining[frame.frame] = &frame;
    for (const auto& [number, frame] : remaining) {
        try {
            const std::shared_ptr<const Image::Frame> header = source.survey().header(number);
            if (const std::string text = source.objectionToFrame(*header); !text.empty())
                throw std::runtime_error(text);
            source.forEachPart(chain, number, *header, [&, frame = frame](std::size_t part) {
                const FramePlan planned = chain.plan();
                if (!planned.isAccepted) throw Failure(Failure::Kind::Correction, shapeRefusal(planned, chain.shape()));
                const DD::Image::Box box = plan.fileBox(part, layout.fileBox(planned, chain.shape()));
                frame->windows.push_back(layout.dataWindow(box, header->parts[part].displayWindow));
            });
        } catch (const std::exception& exception) {
            const auto* const failure = dynamic_cast<const Failure*>(&exception);
            frame->state = RenderPlan::State::Refused;
            frame->reason = failure ? failure->text() : exception.what();
            frame->windows.clear();
        }
    }
}

void surveyFrames(const RenderOptions& options, RenderSource& source, unsigned int threads,
                  const std::function<bool()>& mustStop, const std::function<void(const std::string&)>& note) {
    // Of all frames, also those that an earlier run has finished: whether a sequence is as it should be does not depend
    // on how often the job was started. A movie's frames are all alike.
    if (!source.clip().isMovie()) source.survey().read(numbersOf(source.frames()), threads, mustStop, {});
    tellIrregularity(options, note, source.survey().change());
    for (const std::string& text : source.survey().droppings()) note(text);
}

} // namespace Tools
