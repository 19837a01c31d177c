#pragma once

#include "LensCorrection.h"

/// The node that removes (or adds) a lens's shading, of every layer that it is asked for; alpha passes through
/// unchanged.
class LensShadingCorrection : public LensCorrection {
public:
    /// Registers the node with the host while the library is being loaded.
    static const DD::Image::Op::Description description;
    /// Shared by all nodes of this kind.
    static const char* const logFilePath;

    explicit LensShadingCorrection(DD::Image::Node* node);

    const char* Class() const override;
    const char* node_help() const override;

protected:
    const char* const* correctionModeEntries() const override;
    const char* const* outputTypeEntries() const override;
    bool shouldOutputTypeKnobBeHidden() const override;
    std::map<std::string, std::string> tooltipsForKnobIds() const override;
};

/// Makes the node for the host, which owns it.
DD::Image::Op* LensShadingCorrectionCreate(DD::Image::Node* node);
