#include "Chain/NodeFrameSource.h"

#include <cstring>
#include <string>

#include "DataSourceHelper.h"

namespace Tools {

NodeFrameSource::NodeFrameSource(LensCorrection* node, const ChainSettings& settings, const PixelSize& format)
    : DataSource(node), m_settings(settings), m_format(format) {}

bool NodeFrameSource::shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const {
    parameter.addShading = m_settings.shading == ChainSettings::Shading::Add;
    parameter.renderMap = m_settings.renderMap;
    return m_settings.shading != ChainSettings::Shading::None;
}

bool NodeFrameSource::shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const {
    parameter.distort = m_settings.distortion == ChainSettings::Distortion::Distort;
    parameter.renderMap = m_settings.renderMap;
    return m_settings.distortion != ChainSettings::Distortion::None;
}

bool NodeFrameSource::frameData(Core::FrameData& frameData) const {
    unsigned int frameNumber = 0;
    std::string timecode;
    if (!DataSourceHelper::frameNumberAndTimecode(m_op, frameNumber, timecode)) return false;
    frameData = {};
    if (timecode.length() >= sizeof frameData.timecode) return false;
    frameData.frameNumber = frameNumber;
    std::memcpy(frameData.timecode, timecode.c_str(), timecode.length() + 1);
    frameData.width = m_format.width;
    frameData.height = m_format.height;
    return true;
}

} // namespace Tools
