#include "Render/RenderJob.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include "Chain/PlaneTransfer.h"
#include "Chain/SearchPath.h"
#include "Core/FramePreparation.h"
#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "DroppedPictures.h"
#include "Exception/Exception.h"
#include "FrameReader.h"
#include "ImageError.h"
#include "Render/CorrectionMark.h"
#include "Render/PictureMemory.h"
#include "Report/Failure.h"
#include "StillFormat.h"
#include "System/AtomicFile.h"
#include "System/Interruption.h"
#include "System/RenderProbe.h"

namespace Tools {

/// A frame on its way, and the memory that it takes along.
struct RenderJob::Slot {
    FrameJob job;
    Image::Frame input;
    Image::Metadata metadata;
    Image::Frame plate; ///< header only; empty without a plate
    Image::Metadata plateMetadata;
    Image::Frame output;
};

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

std::uint64_t halfOfTheMemory() {
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGE_SIZE)) / 2;
}

/// All but the pixels, whose memory stays.
void copyHeader(const Image::Part& from, Image::Part& to) {
    to.name = from.name;
    to.dataWindow = from.dataWindow;
    to.displayWindow = from.displayWindow;
    to.pixelAspectRatio = from.pixelAspectRatio;
    to.compression = from.compression;
    to.lineOrder = from.lineOrder;
    to.tileWidth = from.tileWidth;
    to.tileHeight = from.tileHeight;
    to.channels = from.channels;
    to.attributes = from.attributes;
    to.removeAttribute(Image::droppedPicturesAttribute);
}

std::vector<std::int32_t> framesOf(const std::vector<FrameJob>& jobs) {
    std::vector<std::int32_t> frames;
    for (const FrameJob& job : jobs) frames.push_back(job.frame);
    return frames;
}

std::vector<FrameJob> withInput(std::vector<FrameJob> jobs) {
    jobs.erase(std::remove_if(jobs.begin(), jobs.end(), [](const FrameJob& job) { return job.input.empty(); }),
               jobs.end());
    return jobs;
}

/// The frames whose headers are looked at whole before the first is corrected.
std::vector<std::int32_t> checkedFrames(const std::vector<FrameJob>& jobs) {
    return {jobs.front().frame, jobs[jobs.size() / 2].frame, jobs.back().frame};
}

/// The writer names the file that it was given; a user knows the final name only.
std::string withFinalName(std::string text, const AtomicFile& file) {
    const std::string& temporary = file.temporaryPath();
    for (std::size_t place = 0; (place = text.find(temporary, place)) != std::string::npos; place += file.path().size())
        text.replace(place, temporary.size(), file.path());
    return text;
}

} // namespace

RenderJob::RenderJob(const RenderOptions& options)
    : m_options(options),
      m_threads(options.threads != 0 ? options.threads : std::max(1u, std::thread::hardware_concurrency())),
      m_clip(options.clip, options.decoding),
      m_jobs(frameJobs(options, m_clip.frames())),
      m_survey(m_clip, framesOf(m_jobs)),
      m_finished(options.output),
      m_inputSpace(options) {
    if (options.plate) {
        m_plate.emplace(*options.plate, options.decoding);
        m_plateSurvey.emplace(*m_plate, std::vector<std::int32_t>());
    }
    if (m_plate) {
        for (const FrameJob& job : m_jobs) {
            const std::optional<std::string> file = m_plate->fileOf(job.frame);
            std::error_code error;
            if (!file || !std::filesystem::equivalent(*file, job.output, error)) continue;
            throw Failure(
                ExitCode::WrongUse,
                fmt::format("Frame {} would replace its plate, \"{}\"; choose another output.", job.frame, job.output));
        }
    }
    const std::vector<FrameJob> jobs = withInput(m_jobs);
    keepHeaders(checkedFrames(jobs));
    m_searchPath = searchPath(lensClip(), m_plate ? *m_plateSurvey : m_survey, framesOf(jobs));
    m_correctionFile = options.correctionFile ? *options.correctionFile : searchedCorrectionFile(m_searchPath);
}

RenderJob::~RenderJob() = default;

const Clip& RenderJob::lensClip() const { return m_plate ? *m_plate : m_clip; }

bool RenderJob::mustStop() const { return m_isStopped || Interruption::requested(); }

/// Everything that a frame is made from.
std::string RenderJob::outputKey(const FrameJob& job) const {
    const auto identity = [](const std::string& path) { return path.empty() ? "-" : FinishedFrames::identity(path); };
    const std::string plate = m_plate ? identity(m_plate->fileOf(job.frame).value_or("missing")) : "-";
    std::string boxes;
    for (const auto& [part, box] : m_constantBoxes)
        boxes += fmt::format("{}: {} {} {} {} ", part, box.x(), box.y(), box.r(), box.t());
    const auto sidecar = [&](const std::string& clip) { return identity(Image::MetadataSidecar::pathFor(clip)); };
    return FinishedFrames::fingerprint(fmt::format(
        "{}|{}|{}|{}|{}|{}|{}|{}|{}x{}|{}x{}|{}|{}|{}|{}|{}|{}|{}|{}|{}|{}|{}|{}", ORVEX_VERSION, job.frame,
        identity(job.input), plate, identity(m_correctionFile), sidecar(m_options.clip),
        m_options.plate ? sidecar(*m_options.plate) : "-", m_options.imageArea ? m_options.imageArea->width : 0,
        m_options.imageArea ? m_options.imageArea->height : 0,
        m_options.clipResolution ? m_options.clipResolution->width : 0,
        m_options.clipResolution ? m_options.clipResolution->height : 0, static_cast<int>(m_options.distortion),
        static_cast<int>(m_options.shading), m_options.renderMap, m_options.overscan.value_or(-1.0f),
        m_options.pixelType ? static_cast<int>(*m_options.pixelType) : -1, m_options.compression.value_or("-"),
        static_cast<int>(m_options.window), static_cast<int>(m_options.boxSize), boxes,
        m_options.inputSpace.value_or("-"), m_inputSpace.isConverting() ? identity(m_inputSpace.configFile()) : "-",
        m_options.ignoresPixelAspect, m_options.shadingLayers.string()));
}

std::vector<FrameJob> RenderJob::remainingJobs(Progress& progress) {
    std::vector<FrameJob> remaining;
    for (const FrameJob& job : m_jobs) {
        if (job.input.empty()) {
            fail(progress, job, "The clip \"" + m_clip.files().pattern.string() + "\" has no such frame.", false);
        } else if (m_options.skipExisting && m_finished.isFinished(job.output, outputKey(job))) {
            progress.skipped(job.frame, job.output);
        } else {
            remaining.push_back(job);
        }
    }
    return remaining;
}

/// Sets the chain up for each part of a frame's header and calls action(part).
template <typename Action>
void RenderJob::forEachPart(CorrectionChain& chain, std::int32_t frame, const Image::Frame& header, Action action) {
    const Image::Metadata metadata = m_clip.metadata(frame, header);
    const ClipFrame image{&header, &metadata, m_clip.shownPath(frame), m_clip.range()};
    std::shared_ptr<const Image::Frame> plateHeader;
    Image::Metadata plateMetadata;
    ClipFrame plate = image;
    if (m_plate) {
        plateHeader = m_plateSurvey->header(frame);
        plateMetadata = m_plate->metadata(frame, *plateHeader);
        plate = {plateHeader.get(), &plateMetadata, m_plate->shownPath(frame), m_plate->range()};
    }
    for (std::size_t part = 0; part < (m_options.renderMap ? 1 : header.parts.size()); ++part) {
        chain.setFrame(frame, image, part, plate);
        action(part);
    }
}

/// Pixels that the output's format cannot hold would otherwise fail every frame once it is corrected.
void RenderJob::checkOutputFormat(const FrameJob& job, const Image::Frame& input) const {
    if (m_options.isOutputWithDataWindow()) return;
    Image::Frame output;
    output.parts.resize(m_options.renderMap ? 1 : input.parts.size());
    for (std::size_t part = 0; part < output.parts.size(); ++part) {
        layOut(input.parts[part], {}, part, output.parts[part]);
        // The box is not known yet, and such a format has it as its only window.
        output.parts[part].dataWindow = output.parts[part].displayWindow;
    }
    try {
        Image::checkFrame(job.output, output, writeOptions());
    } catch (const Image::ImageError& error) {
        throw Failure(ExitCode::WrongUse,
                      m_options.output.string() + std::string(error.what()).substr(job.output.size()));
    }
}

void RenderJob::tellDarkPictures(Progress& progress, const Image::Frame& first) const {
    if (m_options.isOutputWithDataWindow() || m_options.renderMap || !InputSpace::isLinear(m_options, first)) return;
    const Image::StillFormat& format = Image::StillFormat::of(m_options.output.string());
    if (format.hasLinearLight) return;
    progress.note(fmt::format(
        "The pixels of the clip \"{}\" are linear light, which {} files cannot state: viewers will show them "
        "too dark. Choose {}, or convert the frames to sRGB afterwards.",
        m_options.clip, format.name, format.wider));
}

void RenderJob::keepHeaders(const std::vector<std::int32_t>& frames) {
    m_survey.keep(frames);
    if (m_plateSurvey) m_plateSurvey->keep(frames);
}

/// A clip of nothing but pictures that are never read is input that is not usable, and no frame's own trouble.
void RenderJob::refuseUnsupportedPictures(const std::vector<FrameJob>& jobs) {
    std::string text;
    for (const FrameJob& job : jobs) {
        try {
            m_survey.header(job.frame);
            return;
        } catch (const Image::UnsupportedImage& error) {
            if (text.empty()) text = error.what();
        } catch (const Image::ImageError&) {
            return;
        }
    }
    throw Failure(ExitCode::WrongUse, text);
}

/// Lens data that serve no frame are one message, not one for each of a thousand frames.
void RenderJob::checkBeforeTheFirstFrame(CorrectionChain& chain, const std::vector<FrameJob>& jobs) {
    std::string firstText;
    for (const std::int32_t frame : checkedFrames(jobs)) {
        try {
            forEachPart(chain, frame, *m_survey.header(frame), [&](std::size_t) { chain.validate(); });
            return;
        } catch (const CorrectionError& error) {
            if (firstText.empty()) firstText = error.text();
        } catch (const Image::ImageError&) {
            // This frame's own trouble, told when its turn comes.
            if (jobs.size() > 1) return;
        }
    }
    if (firstText.empty()) return;
    const RenderProbe probe = RenderProbe::run();
    if (!probe.isRendering) {
        throw Failure(
            ExitCode::Environment,
            fmt::format("The OpenCL device does not render: {}\n{}\nRun \"lenscorrect devices\" for more information.",
                        firstText, probe.reason));
    }
    const std::string clip = m_options.plate.value_or(m_options.clip);
    // Frames may bring their lens data along, and then fail for another reason.
    if (m_correctionFile.empty() && firstText.starts_with("Correction file could not be found."))
        throw Failure(
            ExitCode::WrongUse,
            fmt::format(
                "No correction file was found for the clip \"{}\": place the one that names this clip next to it, or "
                "give its path with --correction-file. \"lenscorrect find\" lists the folders searched.\n{}{}",
                clip, firstText, nameNote()));
    throw Failure(ExitCode::WrongUse, fmt::format("{}{}\nNo frame of the clip \"{}\" can be corrected.", firstText,
                                                  nameNote(), m_options.clip));
}

/// A line of its own, or empty.
std::string RenderJob::nameNote() const {
    const std::string note = Tools::nameNote(lensClip(), m_searchPath);
    return note.empty() ? "" : "\n" + note;
}

/// What would fail every frame once it is corrected.
void RenderJob::checkOutputFolder(const FrameJob& first) const {
    AtomicFile::checkFolderOf(first.output);
    if (m_options.renderMap) return;
    const std::string folder = m_options.output.folder();
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(folder, error);
    if (error) return;
    // A frame is about as large as it came; less than half of that holds none, whatever the compression.
    const std::uintmax_t frame = Image::isMovie(first.input) ? 0 : std::filesystem::file_size(first.input, error) / 2;
    if (error || space.available > frame) return;
    throw Failure(ExitCode::Output,
                  fmt::format("The disk of folder \"{}\" has {} kB left, too little for a frame. Free space, or "
                              "choose another folder.",
                              folder, space.available / 1000));
}

/// A mistake in the sequence, perhaps; nothing for an empty text.
void RenderJob::tellIrregularity(Progress& progress, const std::string& text) const {
    if (text.empty()) return;
    if (!m_options.strict) return progress.note(text);
    throw Failure(ExitCode::WrongUse,
                  fmt::format("{}\nRepair the clip, name the frames with --frames, or omit --strict.", text));
}

/// Of all frames, also those that an earlier run has finished: whether a sequence is as it should be does not depend on
/// how often the job was started.
void RenderJob::surveyHeaders(Progress& progress, unsigned int threads) {
    // A movie's frames are all alike.
    if (!m_clip.isMovie()) m_survey.read(framesOf(m_jobs), threads, [this] { return mustStop(); }, {});
    tellIrregularity(progress, m_survey.change());
    for (const std::string& text : m_survey.droppings()) progress.note(text);
}

/// Of all frames of the clip, whichever this job renders: so all get the same box on a farm, where each task renders
/// some of them, and when a few are rendered again.
void RenderJob::findConstantBoxes() {
    CorrectionChain chain(m_options, 1);
    std::vector<std::int32_t> frames;
    for (const auto& entry : m_clip.frames()) frames.push_back(entry.first);
    const auto add = [&](std::int32_t frame, const Image::Frame& header) {
        try {
            forEachPart(chain, frame, header, [&](std::size_t part) {
                const DD::Image::Box box = fileBox(chain.plan(), chain.shape());
                m_constantBoxes.emplace(part, box).first->second.merge(box);
            });
        } catch (const std::exception&) {
            // Such a frame is told about when its turn comes; it has no say in the box.
        }
    };
    m_survey.read(
        frames, m_threads, [this] { return mustStop(); }, add);
}

/// Nothing for a frame that cannot be read: that is told when its turn comes.
std::shared_ptr<const Image::Frame> RenderJob::headerOf(const FrameJob& job) {
    try {
        return m_survey.header(job.frame);
    } catch (const Image::ImageError&) {
        return nullptr;
    }
}

/// Why a picture must not be corrected as the options say; empty: nothing speaks against it.
std::string RenderJob::objection(const Image::Frame& frame) const {
    const std::string shape = m_options.pixelAspectObjection(frame);
    return shape.empty() ? InputSpace::objection(m_options, frame) : shape;
}

std::size_t RenderJob::slotCount(const Image::Frame* first, std::size_t most) const {
    if (!first) return most;
    const Image::WriteOptions writing = writeOptions();
    const std::string output = m_options.output.string();
    std::uint64_t before = 0, after = 0, asFloats = 0;
    for (const Image::Part& part : first->parts) {
        for (const Image::Plane& plane : part.planes) {
            const std::uint64_t bytes = plane.rowBytes() * plane.height;
            before += bytes;
            after += bytes / Image::bytesPerSample(plane.type) *
                     Image::bytesPerSample(Image::storedType(output, plane.type, writing));
        }
        // Whatever the data window is, the nodes are shown the whole format.
        const auto longer = [](std::int64_t a, std::int64_t b) { return static_cast<std::uint64_t>(std::max(a, b)); };
        asFloats =
            std::max(asFloats, longer(part.dataWindow.width(), part.displayWindow.width()) *
                                   longer(part.dataWindow.height(), part.displayWindow.height()) * 4 * sizeof(float));
    }
    // The picture before and after, with room for growth and for the packed file; beside the slots one layer is
    // rendered: plane, node's output, the device's two buffers.
    const std::uint64_t perSlot = before + after * 2 + 1;
    const std::uint64_t limit = m_options.memory != 0 ? m_options.memory : halfOfTheMemory();
    const std::uint64_t forRendering = asFloats * 5;
    const std::uint64_t forSlots = limit > forRendering ? limit - forRendering : 0;
    return static_cast<std::size_t>(std::clamp<std::uint64_t>(forSlots / perSlot, 1, most));
}

void RenderJob::decode(Slot& slot, unsigned int threads) {
    moveMemory(slot.output, slot.input);
    m_clip.read(slot.job.frame, slot.input, threads);
    slot.metadata = m_clip.metadata(slot.job.frame, slot.input);
    if (m_plate) {
        slot.plate = m_plate->readHeader(slot.job.frame);
        slot.plateMetadata = m_plate->metadata(slot.job.frame, slot.plate);
    }
    if (const std::string text = objection(slot.input); !text.empty()) throw std::runtime_error(text);
    if (m_options.force) return;
    const std::string mark = CorrectionMark::objection(m_options, slot.input);
    if (!mark.empty()) throw std::runtime_error(mark);
}

/// What of the nodes' box goes into the file.
DD::Image::Box RenderJob::fileBox(const FramePlan& plan, const PictureShape& shape) const {
    // A distortion map's values are shares of the whole box.
    if (m_options.renderMap) return plan.box;
    DD::Image::Box box = plan.kept;
    // Without a data window, what is less than the format would be a cropped picture.
    if (!m_options.isOutputWithDataWindow()) box.merge(shape.formatBox());
    return box;
}

void RenderJob::layOut(const Image::Part& input, const DD::Image::Box& box, std::size_t part,
                       Image::Part& output) const {
    copyHeader(input, output);
    DD::Image::Box all = box;
    if (const auto constant = m_constantBoxes.find(part); constant != m_constantBoxes.end())
        all.merge(constant->second);
    output.dataWindow =
        m_options.window == RenderOptions::Window::Box ? fileWindow(all, input.displayWindow) : input.displayWindow;
    if (m_options.renderMap) {
        output.channels.clear();
        for (const char* const name : {"A", "B", "G", "R"}) {
            Image::Channel channel;
            channel.name = name;
            channel.type = Image::PixelType::Float;
            output.channels.push_back(channel);
        }
    }
    // What the nodes give is rounded and clipped once, to what the file holds.
    const Image::WriteOptions writing = writeOptions();
    for (Image::Channel& channel : output.channels)
        channel.type = Image::storedType(m_options.output.string(), channel.type, writing);
    output.layOutPlanes();
}

void RenderJob::render(CorrectionChain& chain, Slot& slot, unsigned int threads, Progress& progress) {
    const ClipFrame image{&slot.input, &slot.metadata, m_clip.shownPath(slot.job.frame), m_clip.range()};
    const ClipFrame plate =
        m_plate ? ClipFrame{&slot.plate, &slot.plateMetadata, m_plate->shownPath(slot.job.frame), m_plate->range()}
                : image;
    slot.output.format = slot.input.format;
    slot.output.parts.resize(m_options.renderMap ? 1 : slot.input.parts.size());
    for (std::size_t part = 0; part < slot.output.parts.size(); ++part) {
        chain.setFrame(slot.job.frame, image, part, plate);
        Image::Part& output = slot.output.parts[part];
        const FramePlan plan = chain.validate();
        layOut(slot.input.parts[part], fileBox(plan, chain.shape()), part, output);
        // Outside the rendered box is black.
        const bool isBlack = !plan.box.contains(hostBox(output.dataWindow, output.displayWindow));
        PictureMemory memory(slot.input.parts[part], output, isBlack, m_inputSpace,
                             ShadingLayers::isDataPart(slot.input, part));
        chain.render([&](const DD::Image::ImagePlane& plane, const std::vector<DD::Image::Channel>& channels) {
            memory.provideFor(plane, channels);
            storePlane(plane, output, channels, threads);
            tellClipped(progress, slot.job, plane, output, threads);
        });
    }
    CorrectionMark::write(m_options, m_correctionFile, slot.output);
    noteUnshaded(slot.input);
}

void RenderJob::tellClipped(Progress& progress, const FrameJob& job, const DD::Image::ImagePlane& plane,
                            const Image::Part& output, unsigned int threads) {
    const bool holdsIntegers =
        std::any_of(output.channels.begin(), output.channels.end(), [](const Image::Channel& channel) {
            return channel.type == Image::PixelType::UInt8 || channel.type == Image::PixelType::UInt16;
        });
    if (m_hasToldClipped || !holdsIntegers || !exceedsIntegers(plane, output, threads)) return;
    m_hasToldClipped = true;
    progress.note(fmt::format(
        "Frame {} has values below 0 or above 1, which \"{}\" cannot hold; they are clipped, here and in any other "
        "frame. To keep them, choose .exr, or .tif with --type float.",
        job.frame, job.output));
}

void RenderJob::noteUnshaded(const Image::Frame& frame) {
    if (m_options.shading == RenderOptions::Shading::None || m_options.renderMap) return;
    for (std::size_t part = 0; part < frame.parts.size(); ++part)
        for (const std::string& name : m_options.shadingLayers.unshaded(frame, part))
            if (std::find(m_unshaded.begin(), m_unshaded.end(), name) == m_unshaded.end()) m_unshaded.push_back(name);
}

Image::WriteOptions RenderJob::writeOptions() const {
    Image::WriteOptions writing;
    writing.compression = m_options.compression;
    if (m_options.renderMap && !writing.compression) writing.compression = "zip"; // a map must not lose anything
    if (m_options.pixelType)
        writing.pixelType =
            *m_options.pixelType == RenderOptions::PixelType::Half ? Image::PixelType::Half : Image::PixelType::Float;
    return writing;
}

void RenderJob::encode(Slot& slot, unsigned int threads, Progress& progress) {
    Image::WriteOptions writing = writeOptions();
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
        throw Failure(ExitCode::Output, withFinalName(error.what(), file));
    }
    file.commit();
    m_finished.add(slot.job.output, outputKey(slot.job));
    progress.done(slot.job.frame, slot.job.output);
}

void RenderJob::fail(Progress& progress, const FrameJob& job, const std::string& text, bool isOutput) {
    if (isOutput) m_hasOutputFailed = true;
    if (m_options.stopOnError) m_isStopped = true;
    const std::string file = isOutput || job.input.empty() ? job.output : job.input;
    // Some texts name the file already.
    const bool isNamed = text.find(file) != std::string::npos;
    progress.failed(job.frame, file,
                    isNamed ? fmt::format("Frame {}: {}", job.frame, text)
                            : fmt::format("Frame {} ({}): {}", job.frame, file, text));
    const std::lock_guard<std::mutex> lock(m_failedFramesAccess);
    m_failedFrames.push_back(job.frame);
}

template <typename Step>
bool RenderJob::attempt(Slot& slot, Progress& progress, Step step) {
    try {
        step();
        return true;
    } catch (const Failure& failure) {
        fail(progress, slot.job, failure.what(), failure.exitCode() == ExitCode::Output);
    } catch (const CorrectionError& error) {
        fail(progress, slot.job, error.text(), false);
    } catch (const std::bad_alloc&) {
        fail(progress, slot.job, "There is not enough memory for this frame. Try a smaller --memory or --threads 1.",
             false);
    } catch (const std::exception& exception) {
        fail(progress, slot.job, exception.what(), false);
    }
    return false;
}

/// For each of so many frames that wait for the same stage. The last ones share all threads, so that none is idle while
/// another still works on a whole frame.
unsigned int RenderJob::threadsEach(std::size_t frames) const {
    return static_cast<unsigned int>(std::max<std::size_t>(1, m_threads / std::max<std::size_t>(frames, 1)));
}

ExitCode RenderJob::run() {
    const Progress::Mode mode = Progress::parseMode(m_options.progress, isatty(STDERR_FILENO) == 1);
    Progress progress(mode, m_jobs.size(), Progress::standardOutput(mode));
    AtomicFile::removeAbandoned(m_options.output.folder());
    tellIrregularity(progress, missingFrames(m_clip, framesOf(m_jobs), m_options.frames.has_value()));
    // Of a plate, only what the job needs counts: it may be longer than the clip.
    if (m_plate) tellIrregularity(progress, missingFrames(*m_plate, framesOf(m_jobs), true));
    if (m_options.boxSize == RenderOptions::BoxSize::Constant && m_options.window == RenderOptions::Window::Box)
        findConstantBoxes();
    const std::vector<FrameJob> jobs = remainingJobs(progress);
    if (jobs.empty()) return finish(progress, m_jobs.size());
    // Fewer than all if some are finished; which ones those are depends on the boxes.
    keepHeaders(checkedFrames(jobs));
    refuseUnsupportedPictures(jobs);
    const std::shared_ptr<const Image::Frame> first = headerOf(jobs.front());
    if (first) checkOutputFormat(jobs.front(), *first);

    const std::size_t decoders = std::min<std::size_t>(std::max(1u, m_threads / 2), jobs.size());
    const std::size_t encoders = std::min<std::size_t>(m_threads, jobs.size());
    // What holds for a whole clip is one message, not one for each of a thousand frames.
    if (const std::string text = first ? objection(*first) : ""; !text.empty())
        throw Failure(ExitCode::WrongUse,
                      fmt::format("Frame {} ({}): {}", jobs.front().frame, jobs.front().input, text));
    if (first) tellDarkPictures(progress, *first);
    const std::size_t slots = slotCount(first.get(), decoders + encoders + 1);

    Queue<std::unique_ptr<Slot>> free, decoded, rendered;
    for (std::size_t slot = 0; slot < slots; ++slot) free.push(std::make_unique<Slot>());
    std::atomic<std::size_t> next{0}, decodersLeft{decoders};
    std::atomic<std::size_t> toEncode{jobs.size()}; // frames that have neither come so far nor failed
    const auto giveUp = [&](std::unique_ptr<Slot> slot) {
        --toEncode;
        free.push(std::move(slot));
    };

    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < decoders; ++i) {
        threads.emplace_back([&] {
            while (!mustStop()) {
                std::optional<std::unique_ptr<Slot>> slot = free.pop();
                if (!slot) break;
                const std::size_t index = mustStop() ? jobs.size() : next.fetch_add(1);
                if (index >= jobs.size()) {
                    free.push(std::move(*slot));
                    break;
                }
                (*slot)->job = jobs[index];
                // Until the first frames are there, nothing else can use the other threads.
                const std::size_t abreast = index < decoders ? decoders : jobs.size() - index;
                if (attempt(**slot, progress, [&] { decode(**slot, threadsEach(abreast)); }))
                    decoded.push(std::move(*slot));
                else
                    giveUp(std::move(*slot));
            }
            if (decodersLeft.fetch_sub(1) == 1) decoded.close();
        });
    }
    for (std::size_t i = 0; i < encoders; ++i) {
        threads.emplace_back([&] {
            while (std::optional<std::unique_ptr<Slot>> slot = rendered.pop()) {
                const unsigned int share = threadsEach(toEncode.fetch_sub(1));
                attempt(**slot, progress, [&] { encode(**slot, share, progress); });
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
        const unsigned int share = threadsEach(jobs.size());
        surveyHeaders(progress, share);
        CorrectionChain chain(m_options, share, &m_inputSpace);
        checkBeforeTheFirstFrame(chain, jobs);
        checkOutputFolder(jobs.front());
        while (std::optional<std::unique_ptr<Slot>> slot = decoded.pop()) {
            if (!(m_isStopped && m_options.stopOnError) &&
                attempt(**slot, progress, [&] { render(chain, **slot, share, progress); }))
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
    return finish(progress, m_jobs.size());
}

ExitCode RenderJob::finish(Progress& progress, std::size_t frames) const {
    progress.end(m_options.output.string(), m_unshaded);
    if (!m_failedFrames.empty()) {
        std::vector<std::int32_t> failed = m_failedFrames;
        std::sort(failed.begin(), failed.end());
        fmt::print(stderr, "lenscorrect: {} of {} frames failed: {}\n", failed.size(), frames,
                   FrameRange::string(failed));
    }
    if (Interruption::requested()) {
        const std::size_t left = frames - progress.doneCount() - progress.skippedCount() - progress.failedCount();
        const char* const how = m_options.skipExisting ? "again"
                                : m_options.overwrite  ? "again with --skip-existing instead of --overwrite"
                                                       : "again with --skip-existing";
        fmt::print(stderr, "lenscorrect: Stopped with {} of {} frames left. Run the same command {} to continue.\n",
                   left, frames, how);
        return Interruption::exitCode();
    }
    if (m_hasOutputFailed) return ExitCode::Output;
    return m_failedFrames.empty() ? ExitCode::Done : ExitCode::SomeFramesFailed;
}

} // namespace Tools
