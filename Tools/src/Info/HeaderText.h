#pragma once

#include <string>

#include "CorrectionData/Content.h"

namespace Tools {

/// Maker and type of the lens, as far as the header names them; empty if it names neither.
std::string lensName(const CorrectionData::Header& header);

/// Maker and model of the camera, likewise.
std::string cameraName(const CorrectionData::Header& header);

/// "32 mm", or "24-80 mm" of a zoom lens.
std::string focalLengthText(const CorrectionData::Header& header);

} // namespace Tools
