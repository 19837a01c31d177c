#pragma once

#include <CL/cl.h>

#include <string>

#include "Exception/Exception.h"

namespace Renderer {

/// Sets a kernel's arguments in order; a failure does not skip those after it.
class KernelArguments {
public:
    KernelArguments(cl_kernel kernel, cl_uint firstIndex) : m_kernel(kernel), m_index(firstIndex) {}

    template <typename Value>
    void set(const Value& value) {
        if (m_status != CL_SUCCESS) m_hasEarlierFailed = true;
        m_status = clSetKernelArg(m_kernel, m_index++, sizeof(value), &value);
    }

    /// Status of the last argument. If it was set but an earlier one was not, throws Exception with the text of a
    /// refused launch. The runtime itself refuses only if the argument was never set: one that was set for an earlier
    /// frame would keep that frame's value and render a wrong picture.
    int statusOfLast() const {
        if (m_status == CL_SUCCESS && m_hasEarlierFailed) {
            throw Exception("Failed to execute kernel! (" + std::to_string(CL_INVALID_KERNEL_ARGS) + ")");
        }
        return m_status;
    }

private:
    cl_kernel m_kernel;
    cl_uint m_index;
    cl_int m_status = CL_SUCCESS;
    bool m_hasEarlierFailed = false;
};

} // namespace Renderer
