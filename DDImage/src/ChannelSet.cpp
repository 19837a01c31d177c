#include "DDImage/ChannelSet.h"

#include <algorithm>
#include <bit>

namespace DD {
namespace Image {

unsigned channelCount(); // Channel.cpp: how many are named, Chan_Black included

namespace {

constexpr std::size_t wordBits = 64;

std::size_t bitOf(Channel channel) { return static_cast<std::size_t>(channel) - 1; }

} // namespace

ChannelSet::ChannelSet(ChannelSetInit init) : m_rest(init == Mask_All) {
    if (init != Mask_All && init != Mask_None) m_words.push_back(init);
}

std::uint64_t ChannelSet::word(std::size_t index) const {
    if (index < m_words.size()) return m_words[index];
    return m_rest ? ~std::uint64_t{0} : 0;
}

void ChannelSet::trim() {
    while (!m_words.empty() && m_words.back() == (m_rest ? ~std::uint64_t{0} : 0)) m_words.pop_back();
}

template <class Combine>
void ChannelSet::combine(ChannelMask other, Combine combineWords) {
    const std::size_t count = std::max(m_words.size(), other.m_words.size());
    std::vector<std::uint64_t> words(count);
    for (std::size_t i = 0; i < count; ++i) words[i] = combineWords(word(i), other.word(i));
    // Past all words every bit is m_rest, so one bit stands for them all.
    m_rest = (combineWords(std::uint64_t{m_rest}, std::uint64_t{other.m_rest}) & 1) != 0;
    m_words = std::move(words);
    trim();
}

ChannelSet& ChannelSet::operator+=(Channel channel) {
    if (channel == Chan_Black || contains(channel)) return *this;
    const std::size_t index = bitOf(channel) / wordBits;
    if (index >= m_words.size()) m_words.resize(index + 1, word(m_words.size()));
    m_words[index] |= std::uint64_t{1} << bitOf(channel) % wordBits;
    trim();
    return *this;
}

ChannelSet& ChannelSet::operator-=(Channel channel) { return *this -= ChannelSet(channel); }

ChannelSet& ChannelSet::operator+=(ChannelMask other) {
    combine(other, [](std::uint64_t a, std::uint64_t b) { return a | b; });
    return *this;
}

ChannelSet& ChannelSet::operator-=(ChannelMask other) {
    combine(other, [](std::uint64_t a, std::uint64_t b) { return a & ~b; });
    return *this;
}

ChannelSet& ChannelSet::operator&=(ChannelMask other) {
    combine(other, [](std::uint64_t a, std::uint64_t b) { return a & b; });
    return *this;
}

bool ChannelSet::contains(Channel channel) const {
    return channel != Chan_Black && (word(bitOf(channel) / wordBits) >> bitOf(channel) % wordBits & 1) != 0;
}

bool ChannelSet::contains(ChannelMask other) const {
    ChannelSet missing = other;
    missing -= *this;
    return missing.empty();
}

std::size_t ChannelSet::size() const {
    if (!m_rest) {
        std::size_t count = 0;
        for (const std::uint64_t bits : m_words) count += static_cast<std::size_t>(std::popcount(bits));
        return count;
    }
    std::size_t count = 0;
    for (Channel z = first(); z != Chan_Black; z = next(z)) ++count;
    return count;
}

Channel ChannelSet::next(Channel channel) const {
    const std::size_t end = m_rest ? channelCount() - 1 : m_words.size() * wordBits;
    for (std::size_t bit = channel; bit < end;) {
        const std::uint64_t left = word(bit / wordBits) >> bit % wordBits;
        if (left == 0) {
            bit = (bit / wordBits + 1) * wordBits;
            continue;
        }
        bit += static_cast<std::size_t>(std::countr_zero(left));
        return bit < end ? static_cast<Channel>(bit + 1) : Chan_Black;
    }
    return Chan_Black;
}

} // namespace Image
} // namespace DD
