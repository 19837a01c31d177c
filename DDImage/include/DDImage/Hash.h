#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace DD {
namespace Image {

typedef std::uint64_t U64;

/// A running 64-bit checksum (CRC-64 of ECMA-182: polynomial 0x42F0E1EBA9EA3693, start 0, nothing reflected).
///
/// Appending is byte-exact: the same bytes in the same order give the same value, however they are split into calls.
/// Numbers are appended as their bytes in memory, so hashes are comparable only between machines of the same
/// architecture.
class Hash {
public:
    void append(const void* data, std::size_t length);
    /// The characters without the terminating zero; a null pointer adds nothing.
    void append(const char* text);
    void append(const std::string& text);
    void append(bool value);
    void append(int value);
    void append(unsigned value);
    void append(float value);
    void append(double value);
    void append(U64 value);
    void append(const Hash& other);

    U64 value() const { return m_value; }
    U64 getHash() const { return m_value; }
    void reset() { m_value = 0; }

    bool operator==(const Hash& other) const { return m_value == other.m_value; }
    bool operator!=(const Hash& other) const { return m_value != other.m_value; }
    bool operator<(const Hash& other) const { return m_value < other.m_value; }

private:
    U64 m_value = 0;
};

} // namespace Image
} // namespace DD
