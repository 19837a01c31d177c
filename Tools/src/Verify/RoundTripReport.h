#pragma once

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Lens/RoundTrip.h"

namespace Tools {

/// The result of verifying the frames of a clip or a correction file, for people and for programs.
struct RoundTripReport {
    std::string input;               ///< as written
    std::optional<double> tolerance; ///< px
    std::vector<RoundTrip> frames;
    std::map<std::int32_t, std::string> failures; ///< why a frame could not be verified

    /// Frames whose round trip misses by more than the tolerance.
    std::size_t exceededCount() const;

    /// The worst frames; with a line per frame if wanted.
    std::string text(bool withFrames) const;

    /// By Docs/schemas/verify.json.
    nlohmann::ordered_json json() const;
};

} // namespace Tools
