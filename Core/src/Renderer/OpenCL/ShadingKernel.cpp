#include "Renderer/OpenCL/ShadingKernel.h"

namespace Renderer {

const char* const shadingKernelSource =
#include "Renderer/OpenCL/FrameKernel.cl.inc"

#include "Renderer/OpenCL/ShadingKernel.cl.inc"
    ;

} // namespace Renderer
