#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Clip/Clip.h"
#include "Clip/ClipSurvey.h"

namespace Tools {

/// The path from which the nodes search for the clip's correction file, by their own rule: with the clip's name in the
/// camera metadata where there is one, otherwise with that of its files (Clip::searchPath). Looks at the first of the
/// frames whose header can be read; if there is none, the files decide.
std::string searchPath(const Clip& clip, ClipSurvey& survey, const std::vector<std::int32_t>& frames);

/// A sentence for the reader of such a path whose name is not that of the clip's files; empty if it is.
std::string nameNote(const Clip& clip, const std::string& searchPath);

} // namespace Tools
