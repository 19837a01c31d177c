#include "LensShadingCorrection.h"

#include "LensShadingDataSource.h"

namespace {

const char* const c_correctionModeEntries[] = {"Remove Shading", "Add Shading", nullptr};
const char* const c_outputTypeEntries[] = {"Image", "Map", nullptr};

} // namespace

DD::Image::Op* LensShadingCorrectionCreate(DD::Image::Node* node) { return new LensShadingCorrection(node); }

const DD::Image::Op::Description LensShadingCorrection::description("OrvexLensShadingCorrection",
                                                                    LensShadingCorrectionCreate);

const char* const LensShadingCorrection::logFilePath = "/tmp/com.orvex.LensCorrection.Shading.Nuke.log";

LensShadingCorrection::LensShadingCorrection(DD::Image::Node* node)
    : LensCorrection(node, std::make_unique<LensShadingDataSource>(this), logFilePath) {}

const char* LensShadingCorrection::Class() const { return description.name; }

const char* LensShadingCorrection::node_help() const {
    return "ORVEX Lens Shading Correction v" ORVEX_VERSION
           "\n"
           "Removes the shading (vignetting) of a lens from recorded footage, or adds it to rendered images.";
}

const char* const* LensShadingCorrection::correctionModeEntries() const { return c_correctionModeEntries; }

const char* const* LensShadingCorrection::outputTypeEntries() const { return c_outputTypeEntries; }

bool LensShadingCorrection::shouldOutputTypeKnobBeHidden() const { return false; }

std::map<std::string, std::string> LensShadingCorrection::tooltipsForKnobIds() const {
    return {
        {"correctionMode", "Select the correction mode to either add or remove shading from the footage."},
        {"outputType", "Select the output type to render either the corrected image or a multiply map."},
    };
}
