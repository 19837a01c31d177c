#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Frame.h"

namespace Tools {

/// Which channels of a picture a shading correction changes: those that hold colour.
///
/// By name: red, green and blue of a layer (in any spelling: R, r, red), and Y where a part has no R, are colour unless
/// a word of the layer's name says that it holds data:
///
///     depth, normal, position, motion, vector, velocity, uv, st, id, mask (also as plurals, and with a number),
///     pref, pworld, nref, whatever begins with "crypto", and the whole names N, P and Z
///
/// Words end at ".", "_", "-" and where small letters change to capitals or the reverse: objectID, world_position.
/// R, G, B and A without a layer are the layer "rgba"; in a file of several parts, a part's name is the layer of the
/// channels that have none. Alpha is never shaded.
///
/// By patterns, separated by commas: the last one that fits a channel's layer or its whole name decides; a "!" before
/// it leaves the channel unshaded, and a channel that no pattern fits is unshaded too. "*", "?" and "[abc]" work as in
/// a shell; case counts. Examples: "rgba,light_*" and "*,!N".
///
/// A value type.
class ShadingLayers {
public:
    /// By name.
    ShadingLayers() = default;

    /// By patterns. Throws Failure (WrongUse) for an empty one.
    static ShadingLayers parse(const std::string& patterns);

    /// The patterns as text; empty: by name.
    const std::string& string() const { return m_text; }

    /// Whether a layer's name says that it holds data; false for the main one ("rgba", or none).
    static bool isDataLayer(const std::string& layer);

    /// Whether the part's channels without a layer are data: in a file of several parts, its name says so.
    static bool isDataPart(const Image::Frame& frame, std::size_t part);

    /// For each of the part's channels, in their order.
    std::vector<bool> shadedChannels(const Image::Frame& frame, std::size_t part) const;

    /// What a shading correction leaves unchanged, for people: names of layers of which nothing is shaded, and of
    /// single channels. Without alpha, except where a picture has nothing else.
    std::vector<std::string> unshaded(const Image::Frame& frame, std::size_t part) const;

private:
    struct Pattern {
        std::string text;
        bool isShaded = true;
    };

    std::string m_text;
    std::vector<Pattern> m_patterns;
};

} // namespace Tools
