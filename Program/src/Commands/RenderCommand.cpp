#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "Options.h"
#include "Progress.h"
#include "Render/RenderJob.h"
#include "Report/Failure.h"
#include "Report/Json.h"
#include "Report/PrintableText.h"
#include "System/RenderingDevice.h"

namespace Program {

using namespace Tools;

namespace {

/// `lenscorrect render`: corrects the frames of a clip.
class RenderCommand : public Command {
public:
    std::string name() const override { return "render"; }
    std::string summary() const override { return "Correct the frames of a clip"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;

    /// SomeFramesFailed if a frame failed or, of a dry run, would fail.
    ExitCode run() override;

private:
    ExitCode showPlan(RenderJob& job) const;

    RenderOptionsReader m_options;
    bool m_isDryRun = false;
    bool m_asJson = false;
};

std::string howToContinue(const JobResult& result, std::size_t frames, const RenderOptions& options) {
    const char* const how = options.skipExisting ? "again"
                            : options.overwrite  ? "again with --skip-existing instead of --overwrite"
                                                 : "again with --skip-existing";
    return fmt::format("Stopped with {} of {} frames left. Run the same command {} to continue.", result.left.size(),
                       frames, how);
}

} // namespace

std::string RenderCommand::example() const {
    return "  lenscorrect render plate.%04d.exr --distortion undistort --shading remove -o out/plate.%04d.exr\n"
           "  lenscorrect render cg.%04d.exr --plate plate.%04d.exr --distortion distort --shading add -o "
           "out/cg.%04d.exr";
}

void RenderCommand::declareOptions(CLI::App& app) {
    m_options.declareOptions(app);
    CLI::Option_group& plan = *app.add_option_group("Plan");
    CLI::Option* const dryRun =
        plan.add_flag("--dry-run", m_isDryRun, "Show which frames would be rendered, and why; write nothing");
    plan.add_flag("--json", m_asJson, "Print the plan as JSON (Docs/schemas/render.json)")->needs(dryRun);
}

ExitCode RenderCommand::run() {
    const RenderOptions options = m_options.read();
    if (m_isDryRun) {
        RenderJob job(options);
        return showPlan(job);
    }
    const RenderingDevice device(m_options.device());
    tell(device.notice());
    RenderJob job(options);
    device.check();
    const std::size_t frames = job.frames().size();
    Progress progress(m_options.progress(), frames);
    const JobResult result = job.run(progress.listener());
    progress.end(options.output.string(), result.unshaded);
    tellEnd(result, frames, howToContinue(result, frames, options));
    return exitCodeOf(result);
}

ExitCode RenderCommand::showPlan(RenderJob& job) const {
    const RenderPlan plan = job.plan([](const JobEvent& event) { tell(event.text); });
    if (m_asJson) {
        fmt::print("{}\n", jsonText(plan.json()));
    } else {
        fmt::print("{}", printableText(plan.text()));
    }
    const bool isWhole = plan.count(RenderPlan::State::Missing) == 0 && plan.count(RenderPlan::State::Refused) == 0;
    return isWhole ? ExitCode::Done : ExitCode::SomeFramesFailed;
}

std::unique_ptr<Command> makeRenderCommand() { return std::make_unique<RenderCommand>(); }

} // namespace Program
