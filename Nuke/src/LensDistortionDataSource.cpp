#include "LensDistortionDataSource.h"

#include "LensDistortionCorrection.h"

LensDistortionDataSource::LensDistortionDataSource(LensDistortionCorrection* op) : DataSource(op) {}

bool LensDistortionDataSource::shouldPerformShadingCorrection(Core::ShadingCorrectionParameter&) const { return false; }

bool LensDistortionDataSource::shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const {
    parameter.distort = m_op->correctionMode() == 1;
    parameter.renderMap = m_op->outputType() == 1;
    return true;
}
