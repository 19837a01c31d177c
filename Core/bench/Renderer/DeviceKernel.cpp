#include "Renderer/DeviceKernel.h"

#include <string>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/DistortionKernel.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Renderer/OpenCL/ShadingKernel.h"

using namespace Renderer;

namespace {

void check(cl_int status) {
    if (status != CL_SUCCESS) throw Exception("OpenCL answered " + std::to_string(status) + ".");
}

} // namespace

template <typename Parameter>
DeviceKernel::DeviceKernel(const char* source, const char* name, const Parameter& parameter, const float* frame)
    : m_device(OpenCLKernelHelper::idOfMostPowerfulDevice()),
      m_size(std::size_t{parameter.currentWidth} * parameter.currentHeight * 16),
      m_context(m_device),
      m_queue(m_device, m_context),
      m_program(m_device, m_context, source),
      m_kernel(m_program, name),
      m_input(m_context, CL_MEM_READ_ONLY, m_size),
      m_output(m_context, CL_MEM_WRITE_ONLY, m_size) {
    write(frame);
    setSharedArguments(parameter);
    check(clGetKernelWorkGroupInfo(m_kernel, m_device, CL_KERNEL_WORK_GROUP_SIZE, sizeof(m_localSize), &m_localSize,
                                   nullptr));
}

DeviceKernel::DeviceKernel(const DistortionParameter& parameter, const float* frame)
    : DeviceKernel(distortionKernelSource, distortionImageKernelName, parameter, frame) {}

DeviceKernel::DeviceKernel(const ShadingParameter& parameter, const float* frame)
    : DeviceKernel(shadingKernelSource, shadingImageKernelName, parameter, frame) {
    check(clSetKernelArg(m_kernel, 14, sizeof(parameter.reverse), &parameter.reverse));
    check(clSetKernelArg(m_kernel, 15, sizeof(parameter.gamma), &parameter.gamma));
}

template <typename Parameter>
void DeviceKernel::setSharedArguments(const Parameter& p) {
    cl_uint index = 0;
    for (const cl_mem memory : {static_cast<cl_mem>(m_input), static_cast<cl_mem>(m_output)})
        check(clSetKernelArg(m_kernel, index++, sizeof(memory), &memory));
    for (const std::uint32_t* length : {&p.currentWidth, &p.currentHeight, &p.originalWidth, &p.originalHeight})
        check(clSetKernelArg(m_kernel, index++, sizeof(*length), length));
    for (const float* value : {&p.imageRadius, &p.a0, &p.a1, &p.a2, &p.a3, &p.a4, &p.a5, &p.a6})
        check(clSetKernelArg(m_kernel, index++, sizeof(*value), value));
}

void DeviceKernel::run(Launch launch) {
    const std::size_t items = launch == Launch::perByte ? m_size : m_size / 16;
    const std::size_t global = (items + m_localSize - 1) / m_localSize * m_localSize;
    check(clEnqueueNDRangeKernel(m_queue, m_kernel, 1, nullptr, &global, &m_localSize, 0, nullptr, nullptr));
    check(clFinish(m_queue));
}

void DeviceKernel::write(const float* frame) {
    check(clEnqueueWriteBuffer(m_queue, m_input, CL_TRUE, 0, m_size, frame, 0, nullptr, nullptr));
}

void DeviceKernel::read(float* frame) {
    check(clEnqueueReadBuffer(m_queue, m_output, CL_TRUE, 0, m_size, frame, 0, nullptr, nullptr));
}
