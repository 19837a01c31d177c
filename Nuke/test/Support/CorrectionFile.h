#pragma once

#include <string>

#include "Support/CorrectionFileText.h"

/// A small clip's correction file with the same record in frames 0 to 9; change a field to make another lens or a
/// defect.
struct CorrectionFile {
    std::string videoFileName;
    std::string clipWidth = "64";
    std::string clipHeight = "36";
    std::string sensorWidth = "24";                    ///< mm
    std::string heights = "0,2,4,6,8,10,14";           ///< mm
    std::string shading = "100,99,96,92,86,78,60";     ///< %
    std::string radialDistortion = "0,1,4,9,16,25,40"; ///< per mille

    std::string text() const {
        Support::CorrectionFileText text;
        text.with("videoFileName", videoFileName).with("sensorWidth", sensorWidth).with("tcFps", "0");
        text.with("clipWidth", clipWidth).with("clipHeight", clipHeight);
        for (int frame = 0; frame < 10; ++frame) {
            text.withFrameLine(std::to_string(frame) + ";" + heights + ";" + shading + ";" + radialDistortion +
                               ";;;;;;01:00:00:00");
        }
        return text.string();
    }
};
