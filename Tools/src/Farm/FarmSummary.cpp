#include "Farm/FarmSummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

#include "Clip/FrameRange.h"
#include "Report/Failure.h"
#include "Report/Json.h"
#include "Report/PrintableText.h"

namespace Tools {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// What the reports say about frames. A frame that one start has finished is finished: later starts skip it, and an
/// earlier failure is overcome.
struct Reports {
    std::set<std::int32_t> done;
    std::map<std::int32_t, std::string> failed;

    void add(const fs::path& path, const fs::path& workingFolder) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            // The last line is cut off when the step was killed.
            const Json event = Json::parse(line, nullptr, false);
            if (!event.is_object() || event.value("event", "") != "frame") continue;
            const auto frame = event.at("frame").get<std::int32_t>();
            if (event.value("state", "") == "failed") {
                failed[frame] = event.value("message", "");
            } else if (fs::exists(workingFolder / event.value("file", ""))) {
                done.insert(frame);
            }
        }
    }
};

std::string contentOf(const fs::path& path) {
    std::ifstream file(path);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return withoutLastLineFeeds(text);
}

} // namespace

FarmSummary FarmSummary::read(const std::string& folder) {
    const std::string frames = contentOf(folder + "/frames.txt");
    std::error_code error;
    fs::directory_iterator entries(folder + "/report", error);
    if (frames.empty() || error) {
        refuse(fmt::format("{}: this is not a job folder. Give the one printed by \"lenscorrect submit\".", folder));
    }
    FarmSummary summary;
    Reports reports;
    const std::string workingFolder = contentOf(folder + "/work.txt");
    std::vector<fs::path> paths(begin(entries), end(entries));
    std::sort(paths.begin(), paths.end());
    for (const fs::path& path : paths) {
        if (path.extension() == ".jsonl" && path.filename().string().rfind("warm.", 0) != 0) {
            reports.add(path, workingFolder);
        } else if (path.extension() == ".status") {
            const int status = std::atoi(contentOf(path).c_str());
            if (status != 0) summary.failedSteps[path.stem().string()] = status;
        }
    }
    const FrameRange range = FrameRange::parse(frames);
    for (const std::int32_t frame : range.frames()) {
        ++summary.total;
        if (reports.done.contains(frame)) {
            ++summary.done;
        } else if (const auto found = reports.failed.find(frame); found != reports.failed.end()) {
            summary.failed.insert(*found);
        } else {
            summary.withoutResult.push_back(frame);
        }
    }
    return summary;
}

int FarmSummary::exitStatus() const {
    // Beyond these are signals, and what the farm or the shell has to say.
    constexpr int someFramesFailed = 1, largest = 4;
    if (done == total) return 0;
    int worst = someFramesFailed;
    for (const auto& [step, status] : failedSteps)
        if (status <= largest) worst = std::max(worst, status);
    return worst;
}

std::string FarmSummary::text() const {
    std::string text = fmt::format("{} frames: {} done, {} failed, {} without a result.\n", total, done, failed.size(),
                                   withoutResult.size());
    if (!failed.empty()) text += "Failed:\n";
    for (const auto& [frame, message] : failed) text += fmt::format("  {}: {}\n", frame, message);
    if (!withoutResult.empty()) text += fmt::format("Without a result: {}\n", FrameRange::string(withoutResult));
    if (done == total) return text;
    for (const auto& [step, status] : failedSteps)
        text += fmt::format("{} ended with status {}; see log/{}.log.\n",
                            step == "warm" ? "The first use of the OpenCL device" : "Chunk " + step, status, step);
    return text + "To render these frames again, submit the job again: finished frames are skipped.\n";
}

std::string FarmSummary::json() const {
    Json failures = Json::array();
    for (const auto& [frame, message] : failed) failures.push_back({{"frame", frame}, {"message", message}});
    Json steps = Json::object();
    for (const auto& [step, status] : failedSteps) steps[step] = status;
    return jsonText({{"version", 1},
                     {"total", total},
                     {"done", done},
                     {"failed", failures},
                     {"withoutResult", FrameRange::string(withoutResult)},
                     {"failedSteps", steps},
                     {"exitCode", exitStatus()}}) +
           "\n";
}

} // namespace Tools
