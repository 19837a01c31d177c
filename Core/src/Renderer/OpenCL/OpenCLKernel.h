#pragma once

#include <CL/cl.h>

#include <functional>
#include <string>

#include "Renderer/OpenCL/CLCommandQueue.h"
#include "Renderer/OpenCL/CLContext.h"
#include "Renderer/OpenCL/CLKernel.h"
#include "Renderer/OpenCL/CLProgram.h"

namespace Renderer {

/// Runs one named kernel of one program text over whole RGBA images in host memory, synchronously.
///
/// A pixel buffer holds width × height × 4 elements (R, G, B, A), row by row from row 0 without gaps; sizes are in
/// bytes, the input and the output have the same size. The kernel takes the input buffer (image mode only) and the
/// output buffer as its first arguments; the argument setter sets all others before every execution. One work-item per
/// byte is launched, so a kernel must ignore all items beyond the last pixel. Device, context, queue, program and
/// kernel live as long as the object; device buffers live for one execution. Threads: one at a time per object.
/// Instantiated for float only.
template <typename Element>
class OpenCLKernel {
public:
    /// Sets the kernel's own arguments and returns an OpenCL status; may throw.
    using ArgumentSetter = std::function<int(cl_kernel)>;

    /// Builds the program on the most powerful device. Throws Exception with the failed step and the OpenCL status.
    OpenCLKernel(const std::string& source, const std::string& kernelName, const ArgumentSetter& setSpecificArguments);
    OpenCLKernel(const OpenCLKernel&) = delete;
    OpenCLKernel& operator=(const OpenCLKernel&) = delete;

    /// Image mode: renders `inputBuffer` into `outputBuffer`, both of `bufferSize` bytes; none may be null or zero.
    /// Throws Exception with the failed step and the OpenCL status, or what the argument setter throws; then the output
    /// is undefined and the object stays usable.
    void execute(const Element* inputBuffer, Element* outputBuffer, unsigned long bufferSize);

    /// Map mode: likewise for a kernel without an input.
    void execute(Element* outputBuffer, unsigned long bufferSize);

private:
    void executeWithOptionalInput(const Element* inputBuffer, Element* outputBuffer, unsigned long bufferSize);
    void writeDataIntoInputInDeviceMemory(cl_mem input, const Element* inputBuffer, unsigned long bufferSize);
    void setKernelArguments(cl_mem output, cl_mem input);
    void setKernelSpecificArguments();
    void executeKernelSynchronously(cl_device_id device, unsigned long bufferSize);
    void readDataFromOutputInDeviceMemory(cl_mem output, Element* outputBuffer, unsigned long bufferSize);

    // In order of construction: each needs those before it, and is released before them.
    std::string m_source;
    std::string m_kernelName;
    ArgumentSetter m_setSpecificArguments;
    cl_device_id m_device;
    CLContext m_context;
    CLCommandQueue m_queue;
    CLProgram m_program;
    CLKernel m_kernel;
};

} // namespace Renderer
