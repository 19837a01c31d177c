#include "DDImage/Hash.h"

#include <array>
#include <cstring>

namespace DD {
namespace Image {

namespace {

constexpr U64 polynomial = 0x42F0E1EBA9EA3693;

constexpr std::array<U64, 256> remainders() {
    std::array<U64, 256> table{};
    for (U64 byte = 0; byte < table.size(); ++byte) {
        U64 value = byte << 56;
        for (int bit = 0; bit < 8; ++bit) value = value << 1 ^ (value >> 63 ? polynomial : 0);
        table[byte] = value;
    }
    return table;
}

constexpr std::array<U64, 256> table = remainders();

} // namespace

void Hash::append(const void* data, std::size_t length) {
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < length; ++i) m_value = m_value << 8 ^ table[(m_value >> 56) ^ bytes[i]];
}

void Hash::append(const char* text) {
    if (text) append(text, std::strlen(text));
}
void Hash::append(const std::string& text) { append(text.data(), text.size()); }
void Hash::append(bool value) { append(&value, sizeof value); }
void Hash::append(int value) { append(&value, sizeof value); }
void Hash::append(unsigned value) { append(&value, sizeof value); }
void Hash::append(float value) { append(&value, sizeof value); }
void Hash::append(double value) { append(&value, sizeof value); }
void Hash::append(U64 value) { append(&value, sizeof value); }
void Hash::append(const Hash& other) { append(other.m_value); }

} // namespace Image
} // namespace DD
