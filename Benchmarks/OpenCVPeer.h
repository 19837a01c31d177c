#pragma once

#include "ComparedFrame.h"
#include "InterleavedRun.h"

/// The same correction as users of OpenCV do it.
class OpenCVPeer {
public:
    /// The frame must outlive the run.
    static void addTo(InterleavedRun& run, const ComparedFrame& frame);
};
