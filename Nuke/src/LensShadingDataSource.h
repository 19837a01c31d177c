#pragma once

#include "DataSource.h"

class LensShadingCorrection;

/// Tells the core what the shading node's controls ask for; read at the moment the core asks.
class LensShadingDataSource : public DataSource {
public:
    explicit LensShadingDataSource(LensShadingCorrection* op);

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override;
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override;
};
