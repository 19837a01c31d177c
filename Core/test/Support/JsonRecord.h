#pragma once

#include <string>

namespace Support {

/// A valid record as a frame carries it: a lens with 7 interpolation points on 4096 × 2160 px with 15 mm image radius.
inline const std::string jsonRecord = R"({
    "recordingFormat": {
        "camera": {"manufacturer": "ARRI", "model": "ALEXA Mini"},
        "clipResolution": {"width": 4096, "height": 2160},
        "imageRadius": 15.0
    },
    "frameData": {
        "interpolationPoints": {
            "heights": [0, 2.5, 5, 7.5, 10, 12.5, 15],
            "shading": [100, 99.5, 98, 95.5, 92, 87.5, 82],
            "radialDistortion": [0, -0.5, -2, -4.5, -8, -12.5, -18]
        }
    }
})";

} // namespace Support
