#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Clip/FrameFiles.h"
#include "Farm/FarmJob.h"
#include "Farm/OpenCueJob.h"
#include "Farm/SlurmSubmission.h"
#include "Help.h"
#include "Options.h"
#include "Render/FrameJob.h"
#include "Report/Failure.h"
#include "System/AtomicFile.h"

namespace Program {

using namespace Tools;

namespace {

namespace fs = std::filesystem;

constexpr const char* farmGroup = "Farm";

bool isOneOf(const std::string& text, std::initializer_list<const char*> list) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

/// What was given of the options of `render`, as `render` is to get it; each chunk adds its frames.
std::vector<std::string> renderArguments(const CLI::App& app) {
    std::vector<std::string> arguments;
    for (const CLI::Option* option : visibleOptions(app)) {
        const std::string name = namesOf(*option).back();
        if (option->count() == 0 || option->get_group() == farmGroup) continue;
        if (isOneOf(name, {"--overwrite", "--stop-on-error", "--threads", "--progress"})) {
            refuse(
                fmt::format("{} cannot be used on a farm: tasks resume where they "
                            "stopped and get their cores from the farm. Omit it.",
                            name));
        }
        if (isOneOf(name, {"--frames", "--start", "--end", "--step", "--skip-existing", "--keep-going"})) continue;
        if (option->get_positional()) {
            arguments.push_back(option->results().front());
        } else {
            // In one word, since a value may begin with "-".
            const bool isFlag = option->get_items_expected_max() == 0;
            arguments.push_back(isFlag ? name : name + "=" + option->results().front());
        }
    }
    return arguments;
}

std::vector<std::int32_t> framesOf(const RenderOptions& options) {
    std::vector<std::int32_t> frames;
    if (options.frames) {
        frames = options.frames->frames();
        std::sort(frames.begin(), frames.end());
        return frames;
    }
    const FrameFiles files = FrameFiles::find(options.clip);
    if (!files.pattern.hasFrameNumber())
        refuse(fmt::format("{}: give the frames to render with --frames.", options.clip));
    for (const auto& [frame, path] : files.files) frames.push_back(frame);
    return frames;
}

/// What every task would refuse for its outputs, found out before there is a job; the inputs need not be there yet.
void checkOutputs(RenderOptions options, const std::vector<std::int32_t>& frames) {
    const FilePattern input = FilePattern::parse(options.clip, FilePattern::Use::Input);
    std::map<std::int32_t, std::string> inputs;
    for (const std::int32_t frame : frames) inputs[frame] = input.path(frame);
    options.frames.reset();
    options.skipExisting = true;
    frameJobs(options, inputs);
}

/// `submit`: hands what `render` would do to a render farm. Takes the options of `render` and some of its own.
class SubmitCommand : public Command {
public:
    std::string name() const override { return "submit"; }
    std::string summary() const override { return "Render a clip on a farm"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    FarmJob makeJob() const;
    ExitCode submit(const FarmJob& job) const;
    std::string newFolder() const;

    RenderOptionsReader m_render;
    CLI::App* m_app = nullptr;
    std::string m_engine = "slurm";
    std::string m_name;
    std::string m_folder;
    std::string m_program;
    std::string m_show;
    std::string m_shot;
    std::vector<std::string> m_engineOptions;
    unsigned int m_framesPerChunk = 10;
    unsigned int m_cores = 0;
    unsigned int m_tasksAtOnce = 0;
    bool m_wait = false;
};

} // namespace

std::string SubmitCommand::example() const {
    return "  lenscorrect submit plate.%04d.exr --distortion undistort -o out/plate.%04d.exr --chunk 20 --wait\n"
           "  lenscorrect submit plate.%04d.exr --shading remove -o out/plate.%04d.exr --engine opencue --show a "
           "--shot b";
}

void SubmitCommand::declareOptions(CLI::App& app) {
    m_app = &app;
    m_render.declareOptions(app);
    const auto inFarmGroup = [](CLI::Option* option) { return option->group(farmGroup); };
    inFarmGroup(app.add_option("--engine", m_engine, "Farm that runs the job; opencue: write the job description"))
        ->capture_default_str()
        ->check(CLI::IsMember({"slurm", "opencue"}));
    inFarmGroup(app.add_option("--chunk", m_framesPerChunk, "Frames per task"))
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000));
    inFarmGroup(app.add_option("--cores", m_cores, "Cores per task; default: the farm decides"));
    inFarmGroup(app.add_option("--limit", m_tasksAtOnce, "Maximum number of tasks at once (slurm)"));
    inFarmGroup(app.add_flag("--wait", m_wait, "Wait for the job, print its summary and exit with its status (slurm)"));
    inFarmGroup(app.add_option("--name", m_name, "Job name; default: name of the output"));
    inFarmGroup(app.add_option("--folder", m_folder, "New job folder; default: lenscorrect-job-1, -2 ..."));
    inFarmGroup(app.add_option("--program", m_program, "Path of lenscorrect on the farm's machines"));
    inFarmGroup(app.add_option("--engine-option", m_engineOptions,
                               "Option for sbatch, such as --engine-option=--partition=cpu; can be repeated"));
    inFarmGroup(app.add_option("--show", m_show, "Show of the job (opencue)"));
    inFarmGroup(app.add_option("--shot", m_shot, "Shot of the job (opencue)"));
}

ExitCode SubmitCommand::run() {
    FarmJob job = makeJob();
    if (m_engine == "opencue") {
        if (m_show.empty() || m_shot.empty()) refuse("OpenCue needs --show and --shot.");
        if (m_wait || m_tasksAtOnce > 0 || !m_engineOptions.empty())
            refuse("--wait, --limit and --engine-option are for Slurm.");
        job.write();
        const char* const user = std::getenv("USER");
        const std::string path = job.folder + "/opencue.xml";
        writeTextFile(path, OpenCueJob{m_show, m_shot, user ? user : "lenscorrect"}.xml(job));
        fmt::print("OpenCue job: {}\nWhile the job runs: lenscorrect summary {}\n", path, job.folder);
        return ExitCode::Done;
    }
    SlurmSubmission::checkPrograms();
    const std::size_t maximum = SlurmSubmission::maximumArraySize();
    if (job.chunks().size() > maximum) {
        job.framesPerChunk = (job.frames.size() + maximum - 1) / maximum;
        fmt::print(stderr, "lenscorrect: Slurm allows {} tasks at most; each renders {} frames.\n", maximum,
                   job.framesPerChunk);
    }
    job.write();
    return submit(job);
}

ExitCode SubmitCommand::submit(const FarmJob& job) const {
    const SlurmSubmission slurm{m_tasksAtOnce, m_engineOptions};
    const SlurmSubmission::Numbers numbers = slurm.submit(job);
    fmt::print("Slurm jobs: {} (kernel cache), {} ({} frames in {} chunks), then the summary\n", numbers.warm,
               numbers.chunks, job.frames.size(), job.chunks().size());
    const int status = slurm.submitSummary(job, numbers, m_wait);
    if (m_wait) {
        std::ostringstream summary;
        summary << std::ifstream(job.summaryPath()).rdbuf();
        fmt::print("{}", summary.str());
    } else {
        fmt::print("When the job ends, the summary is in {}; until then, run: lenscorrect summary {}\n",
                   job.summaryPath(), job.folder);
    }
    return static_cast<ExitCode>(status);
}

FarmJob SubmitCommand::makeJob() const {
    const RenderOptions options = m_render.read();
    FarmJob job;
    job.renderArguments = renderArguments(*m_app);
    job.frames = framesOf(options);
    checkOutputs(options, job.frames);
    job.framesPerChunk = m_framesPerChunk;
    job.cores = m_cores;
    job.workingFolder = fs::current_path().string();
    job.program = m_program.empty() ? fs::read_symlink("/proc/self/exe").string() : m_program;
    job.folder = fs::absolute(m_folder.empty() ? newFolder() : m_folder).lexically_normal().string();
    const std::string output = fs::path(options.output.string()).filename().string();
    job.name = FarmJob::nameFrom(m_name.empty() ? output.substr(0, output.find('.')) : m_name);
    return job;
}

std::string SubmitCommand::newFolder() const {
    for (unsigned int number = 1;; ++number) {
        const std::string folder = fmt::format("lenscorrect-job-{}", number);
        if (!fs::exists(folder)) return folder;
    }
}

std::unique_ptr<Command> makeSubmitCommand() { return std::make_unique<SubmitCommand>(); }

} // namespace Program
