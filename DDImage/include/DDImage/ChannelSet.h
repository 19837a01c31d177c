#pragma once

#include "DDImage/Channel.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace DD {
namespace Image {

enum ChannelSetInit : std::uint32_t {
    Mask_None = 0,
    Mask_Red = 1u << 0,
    Mask_Green = 1u << 1,
    Mask_Blue = 1u << 2,
    Mask_Alpha = 1u << 3,
    Mask_Z = 1u << 4,
    Mask_RGB = Mask_Red | Mask_Green | Mask_Blue,
    Mask_RGBA = Mask_RGB | Mask_Alpha,
    Mask_All = 0xffffffffu, ///< every channel, including those not named yet
};

class ChannelSet;
typedef const ChannelSet& ChannelMask;

/// A set of any number of channels. Chan_Black is never a member.
class ChannelSet {
public:
    ChannelSet() = default;
    ChannelSet(ChannelSetInit init);
    ChannelSet(Channel channel) { *this += channel; }

    ChannelSet& operator+=(Channel);
    ChannelSet& operator-=(Channel);
    ChannelSet& operator+=(ChannelMask);
    ChannelSet& operator-=(ChannelMask);
    ChannelSet& operator&=(ChannelMask);

    bool contains(Channel) const;
    /// Whether every channel of the other set is in this one.
    bool contains(ChannelMask) const;
    bool empty() const { return m_words.empty() && !m_rest; }
    explicit operator bool() const { return !empty(); }
    /// The number of channels that `first` and `next` visit.
    std::size_t size() const;
    /// Visit the members in ascending order; Chan_Black ends the sequence. Of a set of all channels, those named so
    /// far.
    Channel first() const { return next(Chan_Black); }
    Channel next(Channel) const;

    bool operator==(ChannelMask other) const { return m_rest == other.m_rest && m_words == other.m_words; }
    bool operator!=(ChannelMask other) const { return !(*this == other); }

private:
    std::uint64_t word(std::size_t index) const;
    void trim();
    template <class Combine>
    void combine(ChannelMask other, Combine);

    // Bit n of the words is channel n + 1; m_rest is true if all channels after the last word are members. No trailing
    // word repeats m_rest, so equal sets have equal words.
    std::vector<std::uint64_t> m_words;
    bool m_rest = false;
};

} // namespace Image
} // namespace DD
