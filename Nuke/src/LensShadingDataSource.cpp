#include "LensShadingDataSource.h"

#include "LensShadingCorrection.h"

LensShadingDataSource::LensShadingDataSource(LensShadingCorrection* op) : DataSource(op) {}

bool LensShadingDataSource::shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const {
    parameter.addShading = m_op->correctionMode() == 1;
    parameter.renderMap = m_op->outputType() == 1;
    return true;
}

bool LensShadingDataSource::shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter&) const {
    return false;
}
