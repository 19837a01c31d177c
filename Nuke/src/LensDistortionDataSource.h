#pragma once

#include "DataSource.h"

class LensDistortionCorrection;

/// Tells the core what the distortion node's controls ask for; read at the moment the core asks.
class LensDistortionDataSource : public DataSource {
public:
    explicit LensDistortionDataSource(LensDistortionCorrection* op);

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override;
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override;
};
