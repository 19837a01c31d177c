#pragma once

#include <optional>

#include "Chain/ChainSettings.h"
#include "DataSource.h"
#include "Report/Dimensions.h"

namespace Tools {

/// A node's own answers before the node is validated: for a frame as large as the format, without overscan, and the
/// corrections that the settings want. The node's reader must be valid.
class NodeFrameSource : public DataSource {
public:
    /// `format` is read whenever the core asks; it and the settings outlive this object.
    NodeFrameSource(LensCorrection* node, const ChainSettings& settings, const PixelSize& format);

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override;
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override;
    bool frameData(Core::FrameData& frameData) const override;

private:
    const ChainSettings& m_settings;
    const PixelSize& m_format;
};

} // namespace Tools
