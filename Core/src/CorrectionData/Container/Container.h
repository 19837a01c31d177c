#pragma once

#include "CorrectionData/Content.h"
#include "Timecode/Timecode.h"

namespace CorrectionData {

/// Gives the correction data of one clip: its header, and the record of a frame by number or by timecode.
class Container {
public:
    virtual ~Container() = default;

    /// Replaces `header`; on failure it is untouched.
    virtual void headerData(Header& header) = 0;

    /// Replaces `frame` by the record that holds for a frame number; on failure it is untouched.
    virtual void frameData(unsigned int frameNumber, Frame& frame) = 0;

    /// Replaces `frame` by the record that holds for a timecode; on failure it is untouched.
    virtual void frameData(Timecode::Timecode timecode, Frame& frame) = 0;
};

} // namespace CorrectionData
