#pragma once

#include <CL/cl.h>

#include <string>

namespace Renderer {

/// Throws Exception "MESSAGE (STATUS)", the status as a signed decimal, unless `status` is CL_SUCCESS.
/// Example: throwIfFailed(-5, "Failed to create context!") throws "Failed to create context! (-5)".
void throwIfFailed(cl_int status, const std::string& message);

} // namespace Renderer
