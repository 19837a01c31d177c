#include "Renderer/OpenCL/CLProgram.h"

#include <cstring>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLStatus.h"

namespace Renderer {

CLProgram::CLProgram(cl_device_id device, cl_context context, const std::string& source) {
    cl_int status = CL_SUCCESS;
    const char* text = source.c_str();
    m_program = clCreateProgramWithSource(context, 1, &text, nullptr, &status);
    throwIfFailed(status, "Failed to create program!");

    status = clBuildProgram(m_program, 0, nullptr, nullptr, nullptr, nullptr);
    if (status == CL_SUCCESS) return;

    const std::string log = buildLog(device);
    // A constructor that throws runs no destructor.
    clReleaseProgram(m_program);
    throw Exception("Failed to build program executable! (" + std::to_string(status) + ") (" + log + ")");
}

CLProgram::~CLProgram() {
    if (m_program) clReleaseProgram(m_program);
}

std::string CLProgram::buildLog(cl_device_id device) const {
    constexpr std::size_t capacity = 4096;
    char log[capacity] = {};
    std::size_t length = 0;
    const cl_int status = clGetProgramBuildInfo(m_program, device, CL_PROGRAM_BUILD_LOG, capacity, log, &length);
    if (status == CL_SUCCESS || length <= capacity) return std::string(log, strnlen(log, capacity));

    // The device refuses to cut a log that does not fit, so it is fetched whole and cut here.
    std::string whole(length, '\0');
    if (clGetProgramBuildInfo(m_program, device, CL_PROGRAM_BUILD_LOG, length, whole.data(), nullptr) != CL_SUCCESS)
        return std::string();
    return std::string(whole.c_str(), strnlen(whole.c_str(), capacity));
}

} // namespace Renderer
