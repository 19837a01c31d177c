#include "Commands/RenderCommand.h"

#include <fmt/format.h>

#include "Console/Failure.h"
#include "Device/Environment.h"
#include "Device/KernelCache.h"
#include "Exception/Exception.h"
#include "Render/RenderJob.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"

namespace Host {
namespace {

void checkDevice() {
    try {
        Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    } catch (const Exception& exception) {
        throw Failure(ExitCode::Environment,
                      fmt::format("There is no OpenCL device to render on: {} Install a driver (without a GPU: apt-get "
                                  "install pocl-opencl-icd); \"lenscorrect devices\" tells what is found.",
                                  exception.what()));
    }
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
    prepareForRendering();
    const KernelCache cache;
    if (!cache.notice().empty()) fmt::print(stderr, "lenscorrect: {}\n", cache.notice());
    RenderJob job(options);
    checkDevice();
    return job.run();
}

} // namespace Host
