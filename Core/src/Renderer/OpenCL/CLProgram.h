#pragma once

#include <CL/cl.h>

#include <string>

namespace Renderer {

/// Sole owner of a program built from one source text, without build options; released with the object.
class CLProgram {
public:
    /// Throws Exception "Failed to create program! (STATUS)" or, when the text does not compile,
    /// "Failed to build program executable! (STATUS) (LOG)" with the compiler's log for the device, cut at 4096 bytes.
    CLProgram(cl_device_id device, cl_context context, const std::string& source);
    ~CLProgram();
    CLProgram(const CLProgram&) = delete;
    CLProgram& operator=(const CLProgram&) = delete;

    operator cl_program() const { return m_program; }

private:
    CLProgram(cl_context context, const std::string& source);

    /// The first 4096 bytes of the log; empty if the driver returns none.
    std::string buildLog(cl_device_id device) const;

    cl_program m_program = nullptr;
};

} // namespace Renderer
