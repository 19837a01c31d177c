#include "Commands/RenderCommand.h"

#include "Render/RenderJob.h"
#include "System/RenderingDevice.h"

namespace Program {

using namespace Tools;

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
    return job.run();
}

} // namespace Program
