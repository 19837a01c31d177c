#include "Renderer/OpenCL/DistortionKernel.h"

namespace Renderer {

const char* const distortionKernelSource =
#include "Renderer/OpenCL/FrameKernel.cl.inc"

#include "Renderer/OpenCL/DistortionKernel.cl.inc"
    ;

} // namespace Renderer
