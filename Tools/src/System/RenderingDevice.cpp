#include "System/RenderingDevice.h"

#include <fmt/format.h>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Report/Failure.h"

namespace Tools {

void RenderingDevice::check() const {
    try {
        Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    } catch (const Exception& exception) {
        throw Failure(Failure::Kind::Environment,
                      fmt::format("There is no OpenCL device to render on: {} Install a driver (without a GPU: apt-get "
                                  "install pocl-opencl-icd); \"lenscorrect devices\" lists what is installed.",
                                  exception.what()));
    }
}

} // namespace Tools
