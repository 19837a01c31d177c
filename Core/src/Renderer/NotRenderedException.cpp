#include "Renderer/NotRenderedException.h"

namespace Renderer {

NotRenderedException::NotRenderedException(const std::string& briefDescription, const std::string& detailedDescription)
    : Exception(briefDescription, detailedDescription) {}

} // namespace Renderer
