#pragma once

#include "Exception/Exception.h"

namespace Renderer {

/// A frame could not be rendered; brief text and details come from the renderer that failed.
class NotRenderedException : public Exception {
public:
    NotRenderedException(const std::string& briefDescription, const std::string& detailedDescription);
};

} // namespace Renderer
