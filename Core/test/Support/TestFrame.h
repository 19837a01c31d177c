#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

/// RGBA float frames for tests; the same for every run.
class TestFrame {
public:
    /// Noise from 0.01 to 4.01: any wrong position, weight or channel changes the result.
    static std::vector<float> noise(std::uint32_t width, std::uint32_t height) {
        std::vector<float> values(std::size_t{width} * height * 4);
        std::uint32_t state = 1;
        for (float& value : values) {
            state = state * 1664525u + 1013904223u;
            value = 0.01f + static_cast<float>(state >> 8) / 4194304.0f;
        }
        return values;
    }

    /// Noise with zeros of both signs, negative, denormal, infinite and not-a-number values strewn in.
    static std::vector<float> noiseWithSpecialValues(std::uint32_t width, std::uint32_t height) {
        const float infinity = std::numeric_limits<float>::infinity();
        const float special[] = {
            0.0f, -0.0f, -1.5f, 1e-40f, infinity, -infinity, std::numeric_limits<float>::quiet_NaN()};
        std::vector<float> values = noise(width, height);
        for (std::size_t i = 5; i < values.size(); i += 11) values[i] = special[i / 11 % 7];
        return values;
    }

    static std::vector<float> constant(std::uint32_t width, std::uint32_t height, float value) {
        return std::vector<float>(std::size_t{width} * height * 4, value);
    }
};
