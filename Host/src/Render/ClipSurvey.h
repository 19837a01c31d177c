#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Render/Clip.h"

namespace Host {

/// A sentence on the frames that are missing in a sequence; empty if none is. `frames` are those of the job in its
/// order: with `areAsked` those of them that the clip lacks, otherwise the gaps between its first and its last frame.
std::string missingFrames(const Clip& clip, const std::vector<std::int32_t>& frames, bool areAsked);

/// What a user should know about a clip before it is corrected, from its headers; sentences that name the clip.
struct ClipSurvey {
    std::string change;                 ///< of size or channels within the sequence; empty: none
    std::vector<std::string> droppings; ///< what of the files is not read: mip levels, further pages and pictures

    /// Reads the headers of the frames on so many threads; a movie's are not read, since all its frames are alike. A
    /// header that cannot be read is skipped: its frame fails later. `mustStop` ends the survey early.
    static ClipSurvey of(const Clip& clip, const std::vector<std::int32_t>& frames, unsigned int threads,
                         const std::function<bool()>& mustStop);
};

/// The frames missing between the keys, as a list: "3, 7-9"; after ten entries only how many follow.
std::string gapsBetween(const std::map<std::int32_t, std::string>& files);

} // namespace Host
