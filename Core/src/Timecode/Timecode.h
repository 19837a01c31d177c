#pragma once

#include <cstdint>
#include <string>

#include "Exception/Exception.h"

namespace Timecode {

/// A timecode could not be built from its text or advanced, or two timecodes could not be compared or subtracted.
class InvalidTimecodeException : public Exception {
public:
    /// Details: `Timecode String: "01:00:00:25"` and `Frames per Second: "25"` (six significant digits).
    InvalidTimecodeException(const std::string& briefDescription, const std::string& timecode, float framesPerSecond);

    /// Details: `Lhs Timecode: "01:00:00:00@25"` and `Rhs Timecode: "01:00:00:00@24"`.
    InvalidTimecodeException(const std::string& briefDescription, const std::string& lhsTimecode,
                             const std::string& rhsTimecode);
};

/// Identifies a frame of a clip by hours, minutes, seconds and frames together with the clip's frame rate.
///
/// A plain value: copied member by member, no heap storage. There is no drop-frame notation or arithmetic: every rate
/// counts a whole number of frames per second, the rate rounded up (23.976 counts 24). All arithmetic is unsigned
/// 32-bit and wraps silently. Every operation throws nothing but InvalidTimecodeException and leaves its operands
/// unchanged then.
class Timecode {
public:
    std::uint32_t hours = 0; ///< not limited to 24, never wrapped
    std::uint32_t minutes = 0;
    std::uint32_t seconds = 0;
    std::uint32_t frames = 0;
    float framesPerSecond = 0.0f; ///< 0: unknown

    /// Parses HH:MM:SS:FF: exactly four fields separated by ":", each a strict unsigned decimal number; minutes and
    /// seconds below 60, and frames below the rate unless the rate is 0. Example: "00:00:00:24" at 25 is valid,
    /// "00:00:00:25" at 25 is not. Throws InvalidTimecodeException with the text and the rate. The text must not be
    /// null.
    Timecode(const char* _timecode, float _framesPerSecond);

    /// HH:MM:SS:FF, at least two digits each; with the rate as in "01:00:00:00@25". A fractional rate is written with
    /// two decimals: 23.976 as "@23.98".
    std::string string(bool withFramesPerSecond) const;

    /// Advances by a number of frames; hours grow past 23. Example: 23:59:59:24 at 25 plus 1 is 24:00:00:00.
    /// Throws InvalidTimecodeException ("… could not be constructed due to invalid format.") if the rate is not
    /// positive, or so large that the frames of an hour do not fit 32 bits.
    Timecode& operator+=(const unsigned int& frameCount);

    /// Throws InvalidTimecodeException unless the rates are equal or exactly one of them is greater than 0.
    static void checkIfTimecodesAreComparableAndThrowIfNeeded(const Timecode& lhs, const Timecode& rhs);
};

/// A copy advanced by a number of frames, at the same rate; throws as operator+= does.
Timecode operator+(const Timecode& timecode, const unsigned int& frameCount);

/// Number of frames from rhs to lhs. rhs is the reference and must have a rate; lhs has the same rate or none. Example:
/// 01:00:00:10 at 25 minus 01:00:00:00 at 25 is 10. Throws InvalidTimecodeException if the rates do not match, the rate
/// does not fit 32 bits, or lhs is earlier than rhs.
unsigned int operator-(const Timecode& lhs, const Timecode& rhs);

/// Whether all four counters are equal. Throws InvalidTimecodeException if the rates are not comparable.
bool operator==(const Timecode& lhs, const Timecode& rhs);

/// Whether lhs is earlier: by whole seconds, then by frames, without regard to the rate. Throws
/// InvalidTimecodeException if the rates are not comparable.
bool operator<(const Timecode& lhs, const Timecode& rhs);

} // namespace Timecode
