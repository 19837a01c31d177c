#include "Renderer/NativeKernels.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace {

using Float4 = float __attribute__((vector_size(16)));

Float4 load(const float* from) {
    Float4 value;
    std::memcpy(&value, from, sizeof(value));
    return value;
}

void store(Float4 value, float* to) { std::memcpy(to, &value, sizeof(value)); }

template <typename Rows>
void onThreads(unsigned int threads, int height, const Rows& rows) {
    const auto begin = [=](unsigned int share) {
        return static_cast<int>(static_cast<std::int64_t>(height) * share / threads);
    };
    std::vector<std::thread> others;
    for (unsigned int share = 1; share < threads; share++)
        others.emplace_back([&, share] { rows(begin(share), begin(share + 1)); });
    rows(0, begin(1));
    for (std::thread& other : others) other.join();
}

template <typename Parameter>
inline float sextic(const Parameter& p, float d) {
    return p.a0 + p.a1 * d + p.a2 * d * d + p.a3 * d * d * d + p.a4 * d * d * d * d + p.a5 * d * d * d * d * d +
           p.a6 * d * d * d * d * d * d;
}

inline float limited(float value, float length) {
    const float atLeast = value > -2.0f ? value : -2.0f;
    return atLeast < length ? atLeast : length;
}

inline Float4 sample(const float* input, int width, int height, float x, float y) {
    int left = static_cast<int>(x), top = static_cast<int>(y);
    left -= static_cast<float>(left) > x;
    top -= static_cast<float>(top) > y;
    const float right = x - static_cast<float>(left), bottom = y - static_cast<float>(top);
    Float4 sum = {};
    for (int row = 1; row >= 0; row--)
        for (int column = 0; column <= 1; column++) {
            const int tapX = left + column, tapY = top + row;
            const float weight = (column ? right : 1.0f - right) * (row ? bottom : 1.0f - bottom);
            if (weight == 0.0f || tapX < 0 || tapX >= width || tapY < 0 || tapY >= height) continue;
            sum += weight * load(input + (static_cast<std::size_t>(tapY) * static_cast<std::size_t>(width) +
                                          static_cast<std::size_t>(tapX)) *
                                             4);
        }
    return sum;
}

inline Float4 sampleInside(const float* topLeft, std::size_t width, float x, float y, float left, float top) {
    const float right = x - left, bottom = y - top;
    const float* below = topLeft + width * 4;
    return ((1.0f - right) * bottom) * load(below) + (right * bottom) * load(below + 4) +
           ((1.0f - right) * (1.0f - bottom)) * load(topLeft) + (right * (1.0f - bottom)) * load(topLeft + 4);
}

void positionsOfRow(const Renderer::DistortionParameter& p, int y, float* xs, float* ys) {
    const int width = static_cast<int>(p.currentWidth);
    const float floatWidth = static_cast<float>(width), floatHeight = static_cast<float>(p.currentHeight);
    const float centerX = floatWidth / 2.0f - 0.5f, centerY = floatHeight / 2.0f - 0.5f;
    const float halfDiagonal = std::sqrt(floatWidth * floatWidth + floatHeight * floatHeight) / 2.0f;
    const Renderer::DistortionParameter copy = p; // so that no store can seem to change it
    const float deltaY = static_cast<float>(y) - centerY;
    for (int x = 0; x < width; x++) {
        const float deltaX = static_cast<float>(x) - centerX;
        const float distance = std::sqrt(deltaX * deltaX + deltaY * deltaY) / halfDiagonal * copy.imageRadius;
        const float sourceDistance = sextic(copy, distance);
        const float factor = distance > 0.0f ? sourceDistance / distance : 1.0f;
        xs[x] = limited(centerX + deltaX * factor, floatWidth);
        ys[x] = limited(centerY + deltaY * factor, floatHeight);
    }
}

template <typename X, typename Y>
void sampleRowAt(const float* input, int width, int height, const X& xAt, const Y& yAt, float* row) {
    for (int column = 0; column < width; column++) {
        const float x = xAt(column), y = yAt(column);
        const int left = static_cast<int>(x), top = static_cast<int>(y);
        const bool isInside = x >= 0.0f && y >= 0.0f && left < width - 1 && top < height - 1;
        const std::size_t offset = static_cast<std::size_t>(isInside ? top : 0) * static_cast<std::size_t>(width) +
                                   static_cast<std::size_t>(isInside ? left : 0);
        store(isInside ? sampleInside(input + offset * 4, static_cast<std::size_t>(width), x, y,
                                      static_cast<float>(left), static_cast<float>(top))
                       : sample(input, width, height, x, y),
              row + static_cast<std::size_t>(column) * 4);
    }
}

} // namespace

void NativeKernels::distortion(const Renderer::DistortionParameter& parameter, const float* input, float* output,
                               unsigned int threads) {
    const int width = static_cast<int>(parameter.currentWidth), height = static_cast<int>(parameter.currentHeight);
    onThreads(threads, height, [&](int begin, int end) {
        std::vector<float> positionsX(parameter.currentWidth), positionsY(parameter.currentWidth);
        const float* const xs = positionsX.data();
        const float* const ys = positionsY.data();
        for (int y = begin; y < end; y++) {
            positionsOfRow(parameter, y, positionsX.data(), positionsY.data());
            sampleRowAt(
                input, width, height, [=](int x) { return xs[x]; }, [=](int x) { return ys[x]; },
                output + static_cast<std::size_t>(y) * parameter.currentWidth * 4);
        }
    });
}

void NativeKernels::positions(const Renderer::DistortionParameter& parameter, float* xs, float* ys,
                              unsigned int threads) {
    onThreads(threads, static_cast<int>(parameter.currentHeight), [&](int begin, int end) {
        for (int y = begin; y < end; y++) {
            const std::size_t offset = static_cast<std::size_t>(y) * parameter.currentWidth;
            positionsOfRow(parameter, y, xs + offset, ys + offset);
        }
    });
}

void NativeKernels::sampleRow(const float* input, int width, int height, const float* positions, float* row) {
    sampleRowAt(
        input, width, height, [=](int x) { return positions[2 * x]; }, [=](int x) { return positions[2 * x + 1]; },
        row);
}

void NativeKernels::shading(const Renderer::ShadingParameter& parameter, const float* input, float* output,
                            unsigned int threads) {
    onThreads(threads, static_cast<int>(parameter.currentHeight), [&](int begin, int end) {
        const Renderer::ShadingParameter p = parameter; // a copy, so that no store can seem to change it
        const int width = static_cast<int>(p.currentWidth);
        const float floatWidth = static_cast<float>(p.currentWidth), floatHeight = static_cast<float>(p.currentHeight);
        const float centerX = floatWidth / 2.0f - 0.5f, centerY = floatHeight / 2.0f - 0.5f;
        const float halfDiagonal = std::sqrt(floatWidth * floatWidth + floatHeight * floatHeight) / 2.0f;
        std::vector<float> factors(p.currentWidth);
        float* const factorOf = factors.data();
        for (int y = begin; y < end; y++) {
            const float deltaY = static_cast<float>(y) - centerY;
            for (int x = 0; x < width; x++) {
                const float deltaX = static_cast<float>(x) - centerX;
                const float distance = std::sqrt(deltaX * deltaX + deltaY * deltaY) / halfDiagonal * p.imageRadius;
                const float illumination = sextic(p, distance) / 100.0f;
                factorOf[x] = p.reverse > 0 ? illumination : 1.0f / illumination;
            }
            const std::size_t offset = static_cast<std::size_t>(y) * p.currentWidth * 4;
            for (std::size_t x = 0; x < p.currentWidth; x++) {
                const Float4 pixel = load(input + offset + x * 4);
                const Float4 multiplier = {factorOf[x], factorOf[x], factorOf[x], 1.0f};
                store(pixel * multiplier, output + offset + x * 4);
            }
        }
    });
}
