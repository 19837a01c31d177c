#include "Renderer/OpenCL/CLProgram.h"

#include <algorithm>
#include <cstring>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLStatus.h"

namespace Renderer {

CLProgram::CLProgram(cl_context context, const std::string& source) {
    cl_int status = CL_SUCCESS;
    const char* text = source.c_str();
    m_program = clCreateProgramWithSource(context, 1, &text, nullptr, &status);
    throwIfFailed(status, "Failed to create program!");
}

// Once the other constructor is done, the destructor releases the program, whatever is thrown here.
CLProgram::CLProgram(cl_device_id device, cl_context context, const std::string& source) : CLProgram(context, source) {
    const cl_int status = clBuildProgram(m_program, 0, nullptr, nullptr, nullptr, nullptr);
    if (status == CL_SUCCESS) return;
    throw Exception("Failed to build program executable! (" + std::to_string(status) + ") (" + buildLog(device) + ")");
}

CLProgram::~CLProgram() {
    if (m_program) clReleaseProgram(m_program);
}

std::string CLProgram::buildLog(cl_device_id device) const {
    constexpr std::size_t longestLog = 4096;
    std::size_t length = 0;
    if (clGetProgramBuildInfo(m_program, device, CL_PROGRAM_BUILD_LOG, 0, nullptr, &length) != CL_SUCCESS) return "";
    // Drivers refuse a buffer that a log does not fit, so the log is fetched whole and cut here.
    std::string log(length, '\0');
    if (clGetProgramBuildInfo(m_program, device, CL_PROGRAM_BUILD_LOG, length, log.data(), nullptr) != CL_SUCCESS)
        return "";
    log.resize(strnlen(log.data(), std::min(length, longestLog)));
    return log;
}

} // namespace Renderer
