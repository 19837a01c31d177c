#include "Renderer/OpenCL/OpenCLStatus.h"

#include "Exception/Exception.h"

namespace Renderer {

void throwIfFailed(cl_int status, const std::string& message) {
    if (status != CL_SUCCESS) throw Exception(message + " (" + std::to_string(status) + ")");
}

} // namespace Renderer
