#include <optional>

#include "Exception/Assert.h"
#include "Renderer/OpenCL/CLMemory.h"
#include "Renderer/OpenCL/OpenCLKernel.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Renderer/OpenCL/OpenCLStatus.h"

namespace Renderer {

template <typename Element>
OpenCLKernel<Element>::OpenCLKernel(const std::string& source, const std::string& kernelName,
                                    const ArgumentSetter& setSpecificArguments)
    : m_source(source),
      m_kernelName(kernelName),
      m_setSpecificArguments(setSpecificArguments),
      m_device(OpenCLKernelHelper::idOfMostPowerfulDevice()),
      m_context(m_device),
      m_queue(m_device, m_context),
      m_program(m_device, m_context, m_source),
      m_kernel(m_program, m_kernelName) {}

template <typename Element>
void OpenCLKernel<Element>::execute(const Element* inputBuffer, Element* outputBuffer, unsigned long bufferSize) {
    ORVEX_ASSERT(inputBuffer);
    ORVEX_ASSERT(outputBuffer);
    ORVEX_ASSERT(bufferSize);
    executeWithOptionalInput(inputBuffer, outputBuffer, bufferSize);
}

template <typename Element>
void OpenCLKernel<Element>::execute(Element* outputBuffer, unsigned long bufferSize) {
    ORVEX_ASSERT(outputBuffer);
    ORVEX_ASSERT(bufferSize);
    executeWithOptionalInput(nullptr, outputBuffer, bufferSize);
}

template <typename Element>
void OpenCLKernel<Element>::executeWithOptionalInput(const Element* inputBuffer, Element* outputBuffer,
                                                     unsigned long bufferSize) {
    const CLMemory output(m_context, CL_MEM_WRITE_ONLY, bufferSize);
    std::optional<CLMemory> input;
    if (inputBuffer) {
        input.emplace(m_context, cl_mem_flags{CL_MEM_READ_ONLY}, bufferSize);
        writeDataIntoInputInDeviceMemory(*input, inputBuffer, bufferSize);
    }
    setKernelArguments(output, input ? static_cast<cl_mem>(*input) : nullptr);
    setKernelSpecificArguments();
    executeKernelSynchronously(m_device, bufferSize);
    readDataFromOutputInDeviceMemory(output, outputBuffer, bufferSize);
}

template <typename Element>
void OpenCLKernel<Element>::writeDataIntoInputInDeviceMemory(cl_mem input, const Element* inputBuffer,
                                                             unsigned long bufferSize) {
    throwIfFailed(clEnqueueWriteBuffer(m_queue, input, CL_TRUE, 0, bufferSize, inputBuffer, 0, nullptr, nullptr),
                  "Failed to write to input in device memory!");
}

template <typename Element>
void OpenCLKernel<Element>::setKernelArguments(cl_mem output, cl_mem input) {
    if (input) {
        const cl_int status =
            clSetKernelArg(m_kernel, 0, sizeof(cl_mem), &input) | clSetKernelArg(m_kernel, 1, sizeof(cl_mem), &output);
        throwIfFailed(status, "Failed to set input and output kernel arguments!");
    } else {
        throwIfFailed(clSetKernelArg(m_kernel, 0, sizeof(cl_mem), &output), "Failed to set output kernel argument!");
    }
}

template <typename Element>
void OpenCLKernel<Element>::setKernelSpecificArguments() {
    throwIfFailed(m_setSpecificArguments(m_kernel), "Failed to set kernel specific arguments!");
}

template <typename Element>
void OpenCLKernel<Element>::executeKernelSynchronously(cl_device_id device, unsigned long bufferSize) {
    std::size_t localSize = 0;
    const cl_int status =
        clGetKernelWorkGroupInfo(m_kernel, device, CL_KERNEL_WORK_GROUP_SIZE, sizeof(localSize), &localSize, nullptr);
    throwIfFailed(status, "Failed to retrieve kernel work group info!");
    // A work-group of no items is none that can be launched.
    if (localSize == 0) throwIfFailed(CL_INVALID_WORK_GROUP_SIZE, "Failed to retrieve kernel work group info!");

    // One item per byte, rounded up to whole groups, in integers so that it is exact for any size.
    const std::size_t groups = bufferSize / localSize + (bufferSize % localSize != 0 ? 1 : 0);
    const std::size_t globalSize = groups * localSize;
    throwIfFailed(clEnqueueNDRangeKernel(m_queue, m_kernel, 1, nullptr, &globalSize, &localSize, 0, nullptr, nullptr),
                  "Failed to execute kernel!");
    // A kernel that fails on the device is known only here; reading on would deliver stale memory as a result.
    throwIfFailed(clFinish(m_queue), "Failed to execute kernel!");
}

template <typename Element>
void OpenCLKernel<Element>::readDataFromOutputInDeviceMemory(cl_mem output, Element* outputBuffer,
                                                             unsigned long bufferSize) {
    throwIfFailed(clEnqueueReadBuffer(m_queue, output, CL_TRUE, 0, bufferSize, outputBuffer, 0, nullptr, nullptr),
                  "Failed to read output in device memory!");
}

template class OpenCLKernel<float>;

} // namespace Renderer
