#include "Render/RenderJob.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <thread>

#include "Chain/PlaneTransfer.h"
#include "FrameReader.h"
#include "ImageError.h"
#include "Render/CorrectionMark.h"
#include "Render/FinishedFrames.h"
#include "Render/OutputLayout.h"
#include "Render/PictureMemory.h"
#include "Render/Queue.h"
#include "Render/RenderSource.h"
#include "Report/Failure.h"
#include "System/AtomicFile.h"
#include "System/Interruption.h"
#include "System/RenderingDevice.h"

namespace Tools {

/// Decoding, rendering and encoding of different frames overlap:
///
///     frames → decoders (threads) → chain of nodes (this thread) → encoders (threads) → files
///
/// Frames travel in slots, which keep their memory from one frame to the next; there are as many as the memory limit
/// allows, so a stage that is ahead waits for a slot. The nodes run on one thread, since the OpenCL device already uses
/// every core. A frame that fails is reported and its slot continues with another frame.
class RenderJob::Work {
public:
    explicit Work(const RenderOptions& options)
        : m_options(options), m_source(options), m_layout(options), m_finished(options.output) {}

    std::vector<std::int32_t> frames() const { return numbersOf(m_source.frames()); }
    RenderPlan plan(const JobListener& listener);
    JobResult run(const JobListener& listener);

private:
    struct Slot;

    void checkBeforeTheFirstFrame(CorrectionChain& chain, const std::vector<FrameJob>& frames);
    void checkOutputFolder(const FrameJob& first) const;
    void renderAll(JobRecord& record, const std::vector<FrameJob>& frames);
    void decode(Slot& slot, unsigned int threads) const;
    void render(CorrectionChain& chain, Slot& slot, unsigned int threads, JobRecord& record);
    void tellClipped(JobRecord& record, const FrameJob& job, const DD::Image::ImagePlane& plane,
                     const Image::Part& output, unsigned int threads);
    void noteUnshaded(const Image::Frame& frame);
    void encode(Slot& slot, unsigned int threads, JobRecord& record);
    template <typename Step>
    bool attempt(Slot& slot, JobRecord& record, Step step);
    void fail(JobRecord& record, const FrameJob& job, const std::string& text, Failure::Kind kind);
    bool mustStop() const;
    unsigned int threadsEach(std::size_t frames) const;

    const RenderOptions& m_options;
    RenderSource m_source;
    const OutputLayout m_layout;
    FinishedFrames m_finished;
    RenderPlan m_plan; ///< of the run
    std::atomic<bool> m_isStopped{false};
    std::vector<std::string> m_unshaded; ///< of all frames; belongs to the thread of the nodes, as the next one does
    bool m_hasToldClipped = false;
};

/// A frame on its way, and the memory that it takes along.
struct RenderJob::Work::Slot {
    FrameJob job;
    std::string key; ///< taken before the input is read: if that changes meanwhile, a later job makes the frame again
    Image::Frame input;
    Image::Metadata metadata;
    Image::Frame plate; ///< header only; empty without a plate
    Image::Metadata plateMetadata;
    Image::Frame output;
};

namespace {

/// The writer names the file that it was given; a user knows the final name only.
std::string withFinalName(std::string text, const AtomicFile& file) {
    const std::string& temporary = file.temporaryPath();
    for (std::size_t place = 0; (place = text.find(temporary, place)) != std::string::npos; place += file.path().size())
        text.replace(place, temporary.size(), file.path());
    return text;
}

} // namespace

RenderJob::RenderJob(const RenderOptions& options) : m_work(std::make_unique<Work>(options)) {}

RenderJob::~RenderJob() = default;

std::vector<std::int32_t> RenderJob::frames() const { return m_work->frames(); }

RenderPlan RenderJob::plan(const JobListener& listener) { return m_work->plan(listener); }

JobResult RenderJob::run(const JobListener& listener) { return m_work->run(listener); }

bool RenderJob::Work::mustStop() const { return m_isStopped || Interruption::requested(); }

RenderPlan RenderJob::Work::plan(const JobListener& listener) {
    JobRecord record(frames(), listener);
    const auto note = [&](const std::string& text) { record.note(text); };
    RenderPlan plan = planRender(m_options, m_source, m_finished, note);
    addWindows(m_options, m_source, plan);
    surveyFrames(m_options, m_source, plan.threads, Interruption::requested, note);
    return plan;
}

/// Lens data that serve no frame are one message, not one for each of a thousand frames.
void RenderJob::Work::checkBeforeTheFirstFrame(CorrectionChain& chain, const std::vector<FrameJob>& frames) {
    std::string firstText;
    for (const std::int32_t frame : checkedFrames(frames)) {
        try {
            m_source.forEachPart(chain, frame, *m_source.survey().header(frame),
                                 [&](std::size_t) { chain.validate(); });
            return;
        } catch (const Failure& error) {
            if (firstText.empty()) firstText = error.text();
        } catch (const Image::ImageError&) {
            // This frame's own trouble, told when its turn comes.
            if (frames.size() > 1) return;
        }
    }
    if (firstText.empty()) return;
    const RenderProbe probe = RenderProbe::run();
    if (!probe.isRendering) {
        throw Failure(
            Failure::Kind::Environment,
            fmt::format("The OpenCL device does not render: {}\n{}\nRun \"lenscorrect devices\" for more information.",
                        firstText, probe.reason));
    }
    const std::string clip = m_options.plate.value_or(m_options.clip);
    // Frames may bring their lens data along, and then fail for another reason.
    if (m_source.correctionFile().empty() && firstText.starts_with("Correction file could not be found."))
        refuse(fmt::format(
            "No correction file was found for the clip \"{}\": place the one that names this clip next to it, or "
            "give its path with --correction-file. \"lenscorrect find\" lists the folders searched.\n{}{}",
            clip, firstText, m_source.nameNote()));
    refuse(fmt::format("{}{}\nNo frame of the clip \"{}\" can be corrected.", firstText, m_source.nameNote(),
                       m_options.clip));
}

/// What would fail every frame once it is corrected.
void RenderJob::Work::checkOutputFolder(const FrameJob& first) const {
    AtomicFile::checkFolderOf(first.output);
    if (m_options.renderMap) return;
    const std::string folder = m_options.output.folder();
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(folder, error);
    if (error) return;
    // A frame is about as large as it came; less than half of that holds none, whatever the compression.
    const std::uintmax_t frame = Image::isMovie(first.input) ? 0 : std::filesystem::file_size(first.input, error) / 2;
    if (error || space.available > frame) return;
    throw Failure(Failure::Kind::Output,
                  fmt::format("The disk of folder \"{}\" has {} kB left, too little for a frame. Free space, or "
                              "choose another folder.",
                              folder, space.available / 1000));
}

void RenderJob::Work::decode(Slot& slot, unsigned int threads) const {
    slot.key = keyOf(slot.job, m_plan, m_source);
    moveMemory(slot.output, slot.input);
    m_source.clip().read(slot.job.frame, slot.input, threads);
    slot.metadata = m_source.clip().metadata(slot.job.frame, slot.input);
    if (m_source.hasPlate()) {
        slot.plate = m_source.lensClip().readHeader(slot.job.frame);
        slot.plateMetadata = m_source.lensClip().metadata(slot.job.frame, slot.plate);
    }
    if (const std::string text = m_source.objectionToFrame(slot.input); !text.empty()) throw std::runtime_error(text);
}

void RenderJob::Work::render(CorrectionChain& chain, Slot& slot, unsigned int threads, JobRecord& record) {
    const ClipFrame image = m_source.shown(slot.job.frame, slot.input, slot.metadata);
    const ClipFrame plate =
        m_source.hasPlate() ? m_source.shownPlate(slot.job.frame, slot.plate, slot.plateMetadata) : image;
    slot.output.format = slot.input.format;
    slot.output.parts.resize(m_options.partCount(slot.input));
    for (std::size_t part = 0; part < slot.output.parts.size(); ++part) {
        chain.setFrame(slot.job.frame, image, part, plate);
        Image::Part& output = slot.output.parts[part];
        const FramePlan plan = chain.validate();
        const DD::Image::Box box = m_plan.fileBox(part, m_layout.fileBox(plan, chain.shape()));
        m_layout.layOut(slot.input.parts[part], box, output);
        // Outside the rendered box is black.
        const bool isBlack = !plan.box.contains(hostBox(output.dataWindow, output.displayWindow));
        PictureMemory memory(slot.input.parts[part], output, isBlack, m_source.space(),
                             ShadingLayers::isDataPart(slot.input, part));
        chain.render([&](const DD::Image::ImagePlane& plane, const std::vector<DD::Image::Channel>& channels) {
            memory.provideFor(plane, channels);
            storePlane(plane, output, channels, threads);
            tellClipped(record, slot.job, plane, output, threads);
        });
    }
    CorrectionMark::write(m_options, m_source.correctionFile(), slot.output);
    noteUnshaded(slot.input);
}

void RenderJob::Work::tellClipped(JobRecord& record, const FrameJob& job, const DD::Image::ImagePlane& plane,
                                  const Image::Part& output, unsigned int threads) {
    const bool holdsIntegers =
        std::any_of(output.channels.begin(), output.channels.end(), [](const Image::Channel& channel) {
            return channel.type == Image::PixelType::UInt8 || channel.type == Image::PixelType::UInt16;
        });
    if (m_hasToldClipped || !holdsIntegers || !exceedsIntegers(plane, output, threads)) return;
    m_hasToldClipped = true;
    record.note(fmt::format(
        "Frame {} has values below 0 or above 1, which \"{}\" cannot hold; they are clipped, here and in any other "
        "frame. To keep them, choose .exr, or .tif with --type float.",
        job.frame, job.output));
}

void RenderJob::Work::noteUnshaded(const Image::Frame& frame) {
    if (m_options.shading == RenderOptions::Shading::None || m_options.renderMap) return;
    for (std::size_t part = 0; part < frame.parts.size(); ++part)
        for (const std::string& name : m_options.shadingLayers.unshaded(frame, part))
            if (std::find(m_unshaded.begin(), m_unshaded.end(), name) == m_unshaded.end()) m_unshaded.push_back(name);
}

void RenderJob::Work::encode(Slot& slot, unsigned int threads, JobRecord& record) {
    Image::WriteOptions writing = m_layout.writeOptions();
    writing.threads = threads;
    writing.makesFile = false;
    // Formats without a data window keep the whole picture as their only window.
    if (!m_options.isOutputWithDataWindow())
        for (Image::Part& part : slot.output.parts) part.displayWindow = part.dataWindow;
    // OpenEXR's readers expect linear light; a map must not inherit what the clip says of its pixels.
    if ((!m_options.isOutputWithDataWindow() || m_options.renderMap) && InputSpace::isLinear(m_options, slot.output))
        InputSpace::stateLinear(slot.output);
    AtomicFile file(slot.job.output);
    try {
        m_options.decoding.writeFrame(file.temporaryPath(), slot.output, writing);
    } catch (const Image::ImageError& error) {
        throw Failure(Failure::Kind::Output, withFinalName(error.what(), file));
    }
    file.commit();
    m_finished.add(slot.job.output, slot.key);
    record.done(slot.job.frame, slot.job.output);
}

void RenderJob::Work::fail(JobRecord& record, const FrameJob& job, const std::string& text, Failure::Kind kind) {
    if (m_options.stopOnError) m_isStopped = true;
    const bool isOutput = kind == Failure::Kind::Output;
    const std::string& file = isOutput || job.input.empty() ? job.output : job.input;
    record.failed(job.frame, file, frameMessage(job.frame, file, text), kind);
}

template <typename Step>
bool RenderJob::Work::attempt(Slot& slot, JobRecord& record, Step step) {
    try {
        step();
        return true;
    } catch (const Failure& failure) {
        fail(record, slot.job, failure.text(), failure.kind());
    } catch (const std::bad_alloc&) {
        fail(record, slot.job, "There is not enough memory for this frame. Try a smaller --memory or --threads 1.",
             Failure::Kind::Environment);
    } catch (const std::exception& exception) {
        fail(record, slot.job, exception.what(), Failure::Kind::WrongUse);
    }
    return false;
}

/// For each of so many frames that wait for the same stage. The last ones share all threads, so that none is idle while
/// another still works on a whole frame.
unsigned int RenderJob::Work::threadsEach(std::size_t frames) const {
    return static_cast<unsigned int>(std::max<std::size_t>(1, m_plan.threads / std::max<std::size_t>(frames, 1)));
}

JobResult RenderJob::Work::run(const JobListener& listener) {
    JobRecord record(frames(), listener);
    AtomicFile::removeAbandoned(m_options.output.folder());
    m_plan = planRender(m_options, m_source, m_finished, [&](const std::string& text) { record.note(text); });
    for (const RenderPlan::Frame& frame : m_plan.frames) {
        if (frame.state == RenderPlan::State::Missing) fail(record, frame, frame.reason, Failure::Kind::WrongUse);
        if (frame.state == RenderPlan::State::Finished) record.skipped(frame.frame, frame.output);
    }
    const std::vector<FrameJob> remaining = m_plan.remaining();
    if (!remaining.empty()) renderAll(record, remaining);
    JobResult result = record.result();
    result.unshaded = m_unshaded;
    result.isInterrupted = Interruption::requested();
    return result;
}

void RenderJob::Work::renderAll(JobRecord& record, const std::vector<FrameJob>& frames) {
    Queue<std::unique_ptr<Slot>> free, decoded, rendered;
    for (std::size_t slot = 0; slot < m_plan.slots; ++slot) free.push(std::make_unique<Slot>());
    std::atomic<std::size_t> next{0}, decodersLeft{m_plan.decoders};
    std::atomic<std::size_t> toEncode{frames.size()}; // frames that have neither come so far nor failed
    const auto giveUp = [&](std::unique_ptr<Slot> slot) {
        --toEncode;
        free.push(std::move(slot));
    };

    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < m_plan.decoders; ++i) {
        threads.emplace_back([&] {
            while (!mustStop()) {
                std::optional<std::unique_ptr<Slot>> slot = free.pop();
                if (!slot) break;
                const std::size_t index = mustStop() ? frames.size() : next.fetch_add(1);
                if (index >= frames.size()) {
                    free.push(std::move(*slot));
                    break;
                }
                (*slot)->job = frames[index];
                // Until the first frames are there, nothing else can use the other threads.
                const std::size_t abreast = index < m_plan.decoders ? m_plan.decoders : frames.size() - index;
                if (attempt(**slot, record, [&] { decode(**slot, threadsEach(abreast)); }))
                    decoded.push(std::move(*slot));
                else
                    giveUp(std::move(*slot));
            }
            if (decodersLeft.fetch_sub(1) == 1) decoded.close();
        });
    }
    for (std::size_t i = 0; i < m_plan.encoders; ++i) {
        threads.emplace_back([&] {
            while (std::optional<std::unique_ptr<Slot>> slot = rendered.pop()) {
                const unsigned int share = threadsEach(toEncode.fetch_sub(1));
                attempt(**slot, record, [&] { encode(**slot, share, record); });
                free.push(std::move(*slot));
            }
        });
    }
    const auto end = [&] {
        rendered.close();
        for (std::thread& thread : threads) thread.join();
    };
    try {
        // The first frames are decoded meanwhile: making the kernels takes longer than that.
        const unsigned int share = threadsEach(frames.size());
        surveyFrames(
            m_options, m_source, share, [this] { return mustStop(); },
            [&](const std::string& text) { record.note(text); });
        CorrectionChain chain(m_options, share, &m_source.space());
        checkBeforeTheFirstFrame(chain, frames);
        checkOutputFolder(frames.front());
        while (std::optional<std::unique_ptr<Slot>> slot = decoded.pop()) {
            if (!(m_isStopped && m_options.stopOnError) &&
                attempt(**slot, record, [&] { render(chain, **slot, share, record); }))
                rendered.push(std::move(*slot));
            else
                giveUp(std::move(*slot));
        }
    } catch (...) {
        m_isStopped = true;
        free.close();
        end();
        throw;
    }
    end();
}

} // namespace Tools
