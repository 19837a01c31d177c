#pragma once

#include <cstdint>

/// Noise like a sensor's: about normal, mean 0, deviation 1.
class Noise {
public:
    explicit Noise(std::uint32_t seed) : m_state(seed * 2654435761u + 1u) {}

    float next() {
        float sum = 0.0f;
        for (int i = 0; i < 3; i++) {
            m_state = m_state * 1664525u + 1013904223u;
            sum += static_cast<float>(m_state >> 8) / 16777216.0f - 0.5f;
        }
        return sum * 2.0f;
    }

private:
    std::uint32_t m_state;
};
