#pragma once

#include <string>
#include <vector>

/// Renders the same small frame through a node of the class, made by the host's graph: a clip whose correction file
/// lies beside `clipPath` (see sampleCorrectionFile). The pixels are R, G, B, A over the node's box, behind the box's
/// four edges. Empty when it fails; `error` tells why.
std::vector<float> renderSampleFrame(const std::string& pluginFolder, const std::string& className,
                                     const std::string& clipPath, std::string& error);

/// The text of the correction file for a clip of that name.
std::string sampleCorrectionFile(const std::string& clipName);
