#include "Map/MapJob.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <thread>
#include <utility>
#include <vector>

#include "Clip/FrameRange.h"
#include "FrameWriter.h"
#include "ImageError.h"
#include "Report/Failure.h"
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
        throw Failure(Failure::Kind::Output, error.what());
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
        } catch (const std::exception& exception) {
            const auto* const failure = dynamic_cast<const Failure*>(&exception);
            if (failure && failure->kind() != Failure::Kind::Correction) throw;
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

void MapJob::check() {
    checkOutputs();
    checkLensData();
}

JobResult MapJob::run(const JobListener& listener) {
    JobRecord record(frames(), listener);
    if (isOneMap()) {
        writeOne();
    } else {
        for (const std::int32_t frame : frames()) {
            if (Interruption::requested()) break;
            writeFrame(frame, record);
        }
    }
    JobResult result = record.result();
    result.isInterrupted = Interruption::requested();
    return result;
}

void MapJob::writeFrame(std::int32_t frame, JobRecord& record) {
    const std::string path = m_options.output.path(frame);
    try {
        write(frame, geometries(frame));
        record.done(frame, path);
    } catch (const std::exception& exception) {
        const auto* const failure = dynamic_cast<const Failure*>(&exception);
        // What keeps one file from being written keeps the others too.
        if (failure && failure->kind() != Failure::Kind::Correction) throw;
        record.failed(frame, path, m_lens.message(frame, exception),
                      failure ? failure->kind() : Failure::Kind::WrongUse);
    }
}

} // namespace Tools
