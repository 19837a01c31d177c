#include "LensDistortionCorrection.h"

#include "LensDistortionDataSource.h"

namespace {

const char* const c_correctionModeEntries[] = {"Undistort", "Distort", nullptr};
const char* const c_outputTypeEntries[] = {"Image", "STMap", nullptr};

} // namespace

DD::Image::Op* LensDistortionCorrectionCreate(DD::Image::Node* node) { return new LensDistortionCorrection(node); }

const DD::Image::Op::Description LensDistortionCorrection::description("OrvexLensDistortionCorrection",
                                                                       LensDistortionCorrectionCreate);

const char* const LensDistortionCorrection::logFilePath = "/tmp/com.orvex.LensCorrection.Distortion.Nuke.log";

LensDistortionCorrection::LensDistortionCorrection(DD::Image::Node* node)
    : LensCorrection(node, std::make_unique<LensDistortionDataSource>(this), logFilePath) {}

const char* LensDistortionCorrection::Class() const { return description.name; }

const char* LensDistortionCorrection::node_help() const {
    return "ORVEX Lens Distortion Correction v" ORVEX_VERSION
           "\n"
           "Removes the geometric distortion of a lens from recorded footage, or applies it to rendered images.";
}

const char* const* LensDistortionCorrection::correctionModeEntries() const { return c_correctionModeEntries; }

const char* const* LensDistortionCorrection::outputTypeEntries() const { return c_outputTypeEntries; }

bool LensDistortionCorrection::shouldOutputTypeKnobBeHidden() const { return true; }

std::map<std::string, std::string> LensDistortionCorrection::tooltipsForKnobIds() const {
    return {
        {"correctionMode", "Select the correction mode to either distort or undistort the footage."},
        {"outputType", "Select the output type to render either the corrected image or a displacement map."},
    };
}
