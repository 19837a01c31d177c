#pragma once

#include "ComparedFrame.h"
#include "InterleavedRun.h"

/// Corrections of the same kind by lensfun, which computes coordinates and vignetting but samples no picture.
class LensfunPeer {
public:
    /// The frame must outlive the run.
    static void addTo(InterleavedRun& run, const ComparedFrame& frame);
};
