#include "Map/MapJob.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <thread>
#include <utility>
#include <vector>

#include "Clip/FrameRange.h"
#include "FrameWriter.h"
#include "ImageError.h"
#include "Report/Failure.h"
#include "Report/Progress.h"
#include "System/AtomicFile.h"
#include "System/Interruption.h"

namespace Tools {

namespace {

unsigned int threadCount() { return std::max(1u, std::thread::hardware_concurrency()); }

} // namespace

MapJob::MapJob(const MapOptions& options) : m_options(options), m_lens(options.lens) {}

void MapJob::checkOutputs() const {
    if (m_options.overwrite) return;
    for (const std::int32_t frame : m_lens.frames()) {
        const std::string path = m_options.output.path(frame);
        std::error_code ignored;
        if (!std::filesystem::exists(path, ignored)) continue;
        refuse(fmt::format("\"{}\" already exists. Give --overwrite to replace existing files.", path));
    }
}

MapJob::Geometries MapJob::geometries(std::int32_t frame) {
    const Direction direction = m_options.content.direction;
    Geometries result;
    result.frame = m_lens.geometry(frame, direction);
    m_options.content.convention.check(result.frame.format);
    if (m_options.content.convention.channels == MapConvention::Channels::Both) {
        result.opposite =
            m_lens.geometry(frame, direction == Direction::Undistort ? Direction::Redistort : Direction::Undistort);
    }
    return result;
}

void MapJob::write(std::int32_t frame, const Geometries& geometries) const {
    const Image::Frame picture = mapPicture(m_options.content, geometries.frame, geometries.opposite, threadCount());
    Image::WriteOptions writing;
    writing.threads = threadCount();
    writing.makesFile = false;
    AtomicFile file(m_options.output.path(frame));
    try {
        m_options.lens.decoding.writeFrame(file.temporaryPath(), picture, writing);
    } catch (const Image::ImageError& error) {
        throw Failure(ExitCode::Output, error.what());
    }
    file.commit();
}

/// Lens data that serve no frame are one message, not one for each of a thousand frames.
void MapJob::checkLensData() {
    const std::vector<std::int32_t>& frames = m_lens.frames();
    std::string firstMessage;
    for (const std::int32_t frame : {frames.front(), frames[frames.size() / 2], frames.back()}) {
        try {
            geometries(frame);
            return;
        } catch (const Failure&) {
            throw;
        } catch (const std::exception& exception) {
            if (!firstMessage.empty()) continue;
            firstMessage = m_lens.message(frame, exception);
            const std::string advice = m_lens.advice(exception);
            if (!advice.empty()) firstMessage += "\n" + advice;
        }
    }
    refuse(firstMessage);
}

void MapJob::writeOne() {
    const std::vector<std::int32_t>& frames = m_lens.frames();
    Geometries first = geometries(frames.front());
    if (frames.size() > 1) first.frame.identity.clear(); // a shared map identifies no single frame
    for (const std::int32_t frame : frames) {
        if (Interruption::requested()) return;
        const Geometries other = geometries(frame);
        const bool isSameOpposite = !first.opposite || other.opposite->isSameMap(*first.opposite);
        if (other.frame.isSameMap(first.frame) && isSameOpposite) continue;
        refuse(
            fmt::format("The maps of frames {} and {} differ, so one file cannot serve all; put %04d in its "
                        "name for a map per frame, or choose a frame with --frame.",
                        frames.front(), frame));
    }
    write(frames.front(), first);
}

ExitCode MapJob::run() {
    const std::vector<std::int32_t>& frames = m_lens.frames();
    checkOutputs();
    checkLensData();
    if (!m_options.output.hasFrameNumber()) {
        try {
            writeOne();
        } catch (const CorrectionError& error) {
            refuse(error.text());
        }
        return Interruption::requested() ? Interruption::exitCode() : ExitCode::Done;
    }
    const Progress::Mode mode = Progress::parseMode(m_options.progress, isatty(STDERR_FILENO) == 1);
    Progress progress(mode, frames.size(), Progress::standardOutput(mode));
    std::vector<std::int32_t> failed;
    std::size_t next = 0;
    for (; next < frames.size() && !Interruption::requested(); ++next) {
        const std::int32_t frame = frames[next];
        const std::string path = m_options.output.path(frame);
        try {
            write(frame, geometries(frame));
            progress.done(frame, path);
        } catch (const Failure&) {
            throw; // what keeps one file from being written keeps the others too
        } catch (const std::exception& exception) {
            progress.failed(frame, path, m_lens.message(frame, exception));
            failed.push_back(frame);
        }
    }
    progress.end(m_options.output.string());
    if (!failed.empty()) {
        std::sort(failed.begin(), failed.end());
        fmt::print(stderr, "lenscorrect: {} of {} frames failed: {}\n", failed.size(), frames.size(),
                   FrameRange::string(failed));
    }
    if (Interruption::requested()) {
        const std::vector<std::int32_t> left(frames.begin() + static_cast<std::ptrdiff_t>(next), frames.end());
        if (!left.empty())
            fmt::print(stderr, "lenscorrect: Stopped. Run the same command with --frames={} to continue.\n",
                       FrameRange::string(left));
        return Interruption::exitCode();
    }
    return failed.empty() ? ExitCode::Done : ExitCode::SomeFramesFailed;
}

} // namespace Tools
