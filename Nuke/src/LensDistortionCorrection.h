#pragma once

#include "LensCorrection.h"

/// The node that removes (or applies) a lens's geometric distortion. Corrects every layer alike.
class LensDistortionCorrection : public LensCorrection {
public:
    /// Registers the node with the host while the library is being loaded.
    static const DD::Image::Op::Description description;
    /// Shared by all nodes of this kind.
    static const char* const logFilePath;

    explicit LensDistortionCorrection(DD::Image::Node* node);

    const char* Class() const override;
    const char* node_help() const override;

protected:
    const char* const* correctionModeEntries() const override;
    const char* const* outputTypeEntries() const override;
    /// The displacement map is left out of the interface on purpose.
    bool shouldOutputTypeKnobBeHidden() const override;
    std::map<std::string, std::string> tooltipsForKnobIds() const override;
};

/// Makes the node for the host, which owns it.
DD::Image::Op* LensDistortionCorrectionCreate(DD::Image::Node* node);
