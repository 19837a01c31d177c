#include "Commands.h"

#include <fmt/format.h>

#include "Options.h"
#include "Progress.h"
#include "Render/RenderJob.h"
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
    ExitCode run() override;

private:
    RenderOptionsReader m_options;
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

void RenderCommand::declareOptions(CLI::App& app) { m_options.declareOptions(app); }

ExitCode RenderCommand::run() {
    const RenderOptions options = m_options.read();
    const RenderingDevice device;
    RenderJob job(options);
    device.check();
    const std::size_t frames = job.frames().size();
    Progress progress(m_options.progress(), frames);
    const JobResult result = job.run(progress.listener());
    progress.end(options.output.string(), result.unshaded);
    tellEnd(result, frames, howToContinue(result, frames, options));
    return exitCodeOf(result);
}

std::unique_ptr<Command> makeRenderCommand() { return std::make_unique<RenderCommand>(); }

} // namespace Program
