#include "Farm/SlurmSubmission.h"

#include <fmt/format.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>

#include "Farm/FarmJob.h"
#include "Report/Failure.h"
#include "Report/PrintableText.h"

namespace Tools {
namespace {

constexpr std::size_t defaultMaximumArraySize = 1001;

struct Result {
    int status; ///< 127: there is no such program
    std::string output;
};

Result runProgram(const std::vector<std::string>& words) {
    std::fflush(stdout);
    std::FILE* const pipe = popen(shellQuoted(words).c_str(), "r");
    if (pipe == nullptr) return {127, ""};
    Result result{0, ""};
    char buffer[4096];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, pipe)) result.output.append(buffer, count);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = withoutLastLineFeeds(std::move(result.output));
    return result;
}

} // namespace

void SlurmSubmission::checkPrograms() {
    if (runProgram({"sh", "-c", "command -v sbatch"}).status != 0) {
        throw Failure(Failure::Kind::Environment,
                      "sbatch was not found. Submit from a machine that has Slurm's programs.");
    }
}

std::size_t SlurmSubmission::maximumArraySize() {
    const std::string configuration = runProgram({"sh", "-c", "scontrol show config 2>/dev/null"}).output;
    std::size_t position = configuration.find("MaxArraySize");
    position = configuration.find('=', position);
    if (position == std::string::npos) return defaultMaximumArraySize;
    const unsigned long size = std::strtoul(configuration.c_str() + position + 1, nullptr, 10);
    return size == 0 ? defaultMaximumArraySize : size;
}

/// Submits a step and answers Slurm's number for it. `submitted`: the numbers of the steps before.
std::string SlurmSubmission::sbatch(const FarmJob& job, const char* step, const std::vector<std::string>& wanted,
                                    const std::vector<std::string>& submitted, int* status) const {
    std::vector<std::string> words = {"sbatch", "--parsable", "--chdir=" + job.workingFolder,
                                      fmt::format("--job-name={}-{}", job.name, step)};
    words.insert(words.end(), options.begin(), options.end());
    words.insert(words.end(), wanted.begin(), wanted.end());
    words.insert(words.end(), {job.scriptPath(), step});
    const Result result = runProgram(words);
    if (status != nullptr) *status = result.status;
    if (result.output.empty()) {
        for (const std::string& id : submitted) runProgram({"scancel", id});
        throw Failure(Failure::Kind::Environment,
                      fmt::format("sbatch refused the job (status {}); its reason is shown above. The job "
                                  "folder {} can be removed.",
                                  result.status, job.folder));
    }
    return result.output.substr(0, result.output.find(';')); // "number" or "number;cluster"
}

SlurmSubmission::Numbers SlurmSubmission::submit(const FarmJob& job) const {
    // What a step writes is in the job's folder already; these files are for the words of Slurm itself.
    const std::string log = "--output=" + job.folder + "/log/slurm-";
    std::vector<std::string> common = {"--requeue", "--open-mode=append"};
    if (job.cores > 0) common.push_back(fmt::format("--cpus-per-task={}", job.cores));
    std::vector<std::string> ofWarm = common;
    ofWarm.push_back(log + "warm.log");
    Numbers numbers;
    numbers.warm = sbatch(job, "warm", ofWarm, {});

    std::vector<std::string> ofChunks = common;
    const std::string limit = tasksAtOnce == 0 ? "" : fmt::format("%{}", tasksAtOnce);
    ofChunks.insert(ofChunks.end(),
                    {fmt::format("--array=0-{}{}", job.chunks().size() - 1, limit),
                     "--dependency=afterok:" + numbers.warm, "--kill-on-invalid-dep=yes", log + "%a.log"});
    numbers.chunks = sbatch(job, "chunk", ofChunks, {numbers.warm});
    return numbers;
}

int SlurmSubmission::submitSummary(const FarmJob& job, const Numbers& numbers, bool wait) const {
    std::vector<std::string> ofSummary = {"--dependency=afterany:" + numbers.chunks, "--output=" + job.summaryPath()};
    if (wait) ofSummary.push_back("--wait");
    int status = 0;
    sbatch(job, "summary", ofSummary, {numbers.warm, numbers.chunks}, &status);
    return wait ? status : 0;
}

} // namespace Tools
