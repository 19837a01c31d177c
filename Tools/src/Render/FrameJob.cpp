#include "Render/FrameJob.h"

#include <fmt/format.h>

#include <filesystem>

#include "Report/Failure.h"

namespace Tools {
namespace {

namespace fs = std::filesystem;

/// Whether both names lead to one file, through links too; a file that does not exist yet has no other name.
bool isSameFile(const std::string& first, const std::string& second) {
    std::error_code error;
    return fs::equivalent(first, second, error) && !error;
}

std::vector<std::int32_t> framesOf(const std::map<std::int32_t, std::string>& available) {
    std::vector<std::int32_t> frames;
    for (const auto& [frame, file] : available) frames.push_back(frame);
    return frames;
}

} // namespace

std::vector<FrameJob> frameJobs(const RenderOptions& options, const std::map<std::int32_t, std::string>& available) {
    const std::vector<std::int32_t> frames = options.frames ? options.frames->frames() : framesOf(available);
    std::vector<FrameJob> jobs;
    bool anyExists = false;
    for (const std::int32_t frame : frames) {
        const auto file = available.find(frame);
        anyExists = anyExists || file != available.end();
        jobs.push_back({frame, file == available.end() ? std::string() : file->second, options.output.path(frame)});
    }
    if (!anyExists) {
        refuse(fmt::format("None of the frames {} exists; the clip \"{}\" has the frames {}.",
                           FrameRange::string(frames), options.clip, FrameRange::string(framesOf(available))));
    }
    if (jobs.size() > 1 && !options.output.hasFrameNumber()) {
        refuse(fmt::format("{} frames cannot be written to one file, \"{}\"; put %04d in its name.", jobs.size(),
                           options.output.string()));
    }
    for (const FrameJob& job : jobs) {
        std::error_code ignored;
        if (!fs::exists(job.output, ignored)) continue;
        if (isSameFile(job.input, job.output)) {
            refuse(fmt::format("Frame {} would replace its own input, \"{}\"; choose another output.", job.frame,
                               job.output));
        }
        if (!options.overwrite && !options.skipExisting) {
            refuse(
                fmt::format("\"{}\" already exists. Give --overwrite to replace existing files, or --skip-existing to "
                            "keep finished frames.",
                            job.output));
        }
    }
    return jobs;
}

} // namespace Tools
