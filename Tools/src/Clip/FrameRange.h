#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Tools {

/// A list of frame numbers as people and render farms write it.
///
/// | Text             | Frames                                                             |
/// |------------------|--------------------------------------------------------------------|
/// | `1001`           | 1001                                                               |
/// | `1001-1100`      | 1001 to 1100, both included                                        |
/// | `1001-1100x2`    | every second of them: 1001, 1003 … 1099                            |
/// | `5-1`, `9-1x-4`  | backwards: 5, 4, 3, 2, 1 and 9, 5, 1                               |
/// | `-10-5`, `-10--5`| -10 to 5 and -10 to -5                                             |
/// | `1-3,10,20-30x5` | one after the other; blanks separate like commas                   |
///
/// The written order is kept; repeated numbers are dropped. `:` is refused, since some programs read it as a step and
/// others as a staggered order.
class FrameRange {
public:
    /// A list of more frames than this is taken for a typing error.
    static constexpr std::size_t maximumCount = 1000000;

    /// Reads a list; throws Failure (WrongUse) naming the text that is not understood, or that has more frames than
    /// `most`, before it takes memory for them.
    static FrameRange parse(const std::string& text, std::size_t most = maximumCount);

    /// The frames from start to end, both included, as farms hand them over. Throws Failure (WrongUse) when the step is
    /// 0 or moves away from the end.
    static FrameRange fromStartToEnd(std::int32_t start, std::int32_t end, std::int32_t step = 1);

    /// At least one number, none twice.
    const std::vector<std::int32_t>& frames() const { return m_frames; }

    /// Shortest text that parses to the same frames: `1-4,10-20x5`.
    std::string string() const;

    /// Likewise for any list of frames; empty for none.
    static std::string string(const std::vector<std::int32_t>& frames);

private:
    std::vector<std::int32_t> m_frames;
};

} // namespace Tools
