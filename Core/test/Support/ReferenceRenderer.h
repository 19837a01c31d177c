#pragma once

#include <vector>

#include "Renderer/DistortionParameter.h"
#include "Renderer/ShadingParameter.h"

/// Both renderers as slow, plain C++ in double precision: what a correct result is, apart from rounding.
class ReferenceRenderer {
public:
    /// RGBA pixels of the frame that the renderer makes of `input`; the input is ignored when a map is wanted.
    static std::vector<double> render(const Renderer::DistortionParameter& parameter, const std::vector<float>& input);
    static std::vector<double> render(const Renderer::ShadingParameter& parameter, const std::vector<float>& input);
};
