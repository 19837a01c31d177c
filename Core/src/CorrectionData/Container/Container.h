#pragma once

#include "CorrectionData/Content.h"
#include "Timecode/Timecode.h"

namespace CorrectionData {

/// Provides the correction data of one clip: its header, and the record of a frame by number or by timecode.
class Container {
public:
    virtual ~Container() = default;

    /// Replaces `header`; leaves it untouched on failure.
    virtual void headerData(Header& header) = 0;

    /// Replaces `frame` with the record that applies to a frame number; leaves it untouched on failure.
    virtual void frameData(unsigned int frameNumber, Frame& frame) = 0;

    /// Replaces `frame` with the record that applies to a timecode; leaves it untouched on failure.
    virtual void frameData(Timecode::Timecode timecode, Frame& frame) = 0;
};

} // namespace CorrectionData
