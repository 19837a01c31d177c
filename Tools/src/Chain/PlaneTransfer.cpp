#include "Chain/PlaneTransfer.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string>

#include "HalfConversion.h"
#include "ParallelFor.h"

namespace Tools {
namespace {

constexpr std::int64_t farthest = std::int64_t{1} << 24;
/// Planes beyond this are not in a cache any more when they are read.
constexpr std::size_t cacheBytes = std::size_t{32} << 20;
/// Rows that a thread takes at once.
constexpr std::size_t rowsPerTask = 64;

/// Which component of the host's plane belongs to each component of one of the file's planes; -1: none.
std::vector<int> componentsInHost(const DD::Image::ImagePlane& plane, const Image::Part& part, std::size_t index,
                                  const std::vector<DD::Image::Channel>& channels) {
    std::vector<int> components(part.planes[index].components, -1);
    for (std::size_t channel = 0; channel < part.channels.size(); ++channel) {
        if (part.channels[channel].plane != index) continue;
        components[part.channels[channel].component] = plane.chanNo(channels[channel]);
    }
    return components;
}

bool isNone(const std::vector<int>& components) {
    return std::all_of(components.begin(), components.end(), [](int component) { return component < 0; });
}

bool isComplete(const std::vector<int>& components) {
    return std::all_of(components.begin(), components.end(), [](int component) { return component >= 0; });
}

/// Whether a pixel of both planes is the same run of components.
bool isSameOrder(const std::vector<int>& components, const DD::Image::ImagePlane& plane) {
    if (!plane.packed() || components.size() != static_cast<std::size_t>(plane.nComps())) return false;
    for (std::size_t i = 0; i < components.size(); ++i)
        if (components[i] != static_cast<int>(i)) return false;
    return true;
}

/// Where a box of the host and the part's data window overlap, and how rows and columns of both correspond.
struct Overlap {
    Overlap(const DD::Image::Box& plane, const Image::Part& part) {
        const DD::Image::Box data = hostBox(part.dataWindow, part.displayWindow);
        left = std::max(plane.x(), data.x());
        right = std::min(plane.r(), data.r());
        bottom = std::max(plane.y(), data.y());
        top = std::min(plane.t(), data.t());
        planeColumn = left - plane.x();
        fileColumn = left - data.x();
        planeBottom = plane.y();
        fileTop = data.t();
    }

    bool isEmpty() const { return left >= right || bottom >= top; }
    std::size_t columns() const { return static_cast<std::size_t>(right - left); }
    std::size_t rows() const { return static_cast<std::size_t>(top - bottom); }
    std::ptrdiff_t planeRow(std::size_t row) const { return bottom - planeBottom + static_cast<std::ptrdiff_t>(row); }
    std::size_t fileRow(std::size_t row) const {
        return static_cast<std::size_t>(fileTop - 1 - bottom) - row; // y grows the other way in a file
    }

    int left = 0, right = 0, bottom = 0, top = 0;
    int planeColumn = 0, fileColumn = 0;
    int planeBottom = 0, fileTop = 0;
};

/// Whether every float of the plane within the overlap comes from one of the part's planes, a row at a time.
bool isFilledByOnePlane(const DD::Image::ImagePlane& plane, const Image::Part& part,
                        const std::vector<DD::Image::Channel>& channels) {
    for (std::size_t index = 0; index < part.planes.size(); ++index)
        if (isSameOrder(componentsInHost(plane, part, index, channels), plane)) return true;
    return false;
}

/// All of a packed plane that lies outside of the overlap.
void blackenAround(DD::Image::ImagePlane& plane, const Overlap& overlap) {
    float* const floats = plane.writable();
    float* const end = floats + plane.usage() / sizeof(float);
    const std::size_t left =
        static_cast<std::size_t>(overlap.planeColumn) * static_cast<std::size_t>(plane.colStride());
    const std::size_t filled = overlap.columns() * static_cast<std::size_t>(plane.colStride());
    float* row = floats + overlap.planeRow(0) * plane.rowStride();
    std::fill(floats, row, 0.0f);
    for (std::size_t i = 0; i < overlap.rows(); ++i, row += plane.rowStride()) {
        std::fill(row, row + left, 0.0f);
        std::fill(row + left + filled, row + plane.rowStride(), 0.0f);
    }
    std::fill(row, end, 0.0f);
}

/// Calls action(row) for each row, on so many threads.
template <typename Action>
void forEachRow(std::size_t rows, unsigned int threads, Action action) {
    Image::parallelFor(threads, (rows + rowsPerTask - 1) / rowsPerTask, [&](Image::WorkQueue& queue) {
        for (std::size_t task = 0; queue.next(task);)
            for (std::size_t row = task * rowsPerTask; row < std::min(rows, (task + 1) * rowsPerTask); ++row)
                action(row);
    });
}

void requireEverySample(const Image::Part& part) {
    for (const Image::Channel& channel : part.channels) {
        if (channel.xSampling == 1 && channel.ySampling == 1) continue;
        throw std::runtime_error("Channel \"" + channel.name +
                                 "\" does not have a sample for every pixel, which is not supported. Convert the "
                                 "picture to full resolution in every channel (RGB instead of luminance and chroma).");
    }
}

} // namespace

DD::Image::Box hostBox(const Image::Window& window, const Image::Window& displayWindow) {
    const std::int64_t x = std::int64_t{window.minX} - displayWindow.minX;
    const std::int64_t y = std::int64_t{displayWindow.maxY} - window.maxY;
    const std::int64_t r = x + window.width();
    const std::int64_t t = y + window.height();
    for (const std::int64_t side : {x, y, r, t}) {
        if (side >= -farthest && side <= farthest) continue;
        throw std::runtime_error("The data window is too far from the display window.");
    }
    return {static_cast<int>(x), static_cast<int>(y), static_cast<int>(r), static_cast<int>(t)};
}

Image::Window fileWindow(const DD::Image::Box& box, const Image::Window& displayWindow) {
    Image::Window window;
    window.minX = displayWindow.minX + box.x();
    window.maxX = displayWindow.minX + box.r() - 1;
    window.minY = displayWindow.maxY - box.t() + 1;
    window.maxY = displayWindow.maxY - box.y();
    return window;
}

void fillPlane(DD::Image::ImagePlane& plane, const Image::Part& part, const std::vector<DD::Image::Channel>& channels,
               unsigned int threads) {
    requireEverySample(part);
    const Overlap overlap(plane.bounds(), part);
    float* const target = plane.writable();
    if (overlap.isEmpty() || !isFilledByOnePlane(plane, part, channels)) plane.clear();
    if (overlap.isEmpty()) return;
    const bool isDistant = plane.usage() > cacheBytes;
    for (std::size_t index = 0; index < part.planes.size(); ++index) {
        const Image::Plane& source = part.planes[index];
        const std::vector<int> components = componentsInHost(plane, part, index, channels);
        if (isNone(components)) continue;
        const std::size_t bytesPerPixel = source.components * Image::bytesPerSample(source.type);
        const std::size_t samples = overlap.columns() * source.components;
        const bool isDirect = isSameOrder(components, plane);
        if (isDirect) blackenAround(plane, overlap);
        forEachRow(overlap.rows(), threads, [&](std::size_t row) {
            const std::uint8_t* const from =
                source.row(overlap.fileRow(row)) + static_cast<std::size_t>(overlap.fileColumn) * bytesPerPixel;
            float* const to = target + overlap.planeRow(row) * plane.rowStride() +
                              static_cast<std::ptrdiff_t>(overlap.planeColumn) * plane.colStride();
            if (isDirect) {
                if (isDistant && source.type == Image::PixelType::Half)
                    Image::halfToDistantFloat(reinterpret_cast<const std::uint16_t*>(from), to, samples);
                else
                    Image::samplesToFloat(source.type, from, to, samples);
                return;
            }
            thread_local std::vector<float> floats;
            floats.resize(samples);
            Image::samplesToFloat(source.type, from, floats.data(), samples);
            for (std::size_t component = 0; component < components.size(); ++component) {
                if (components[component] < 0) continue;
                float* const first = to + static_cast<std::ptrdiff_t>(components[component]) * plane.chanStride();
                for (std::size_t x = 0; x < overlap.columns(); ++x)
                    first[static_cast<std::ptrdiff_t>(x) * plane.colStride()] =
                        floats[x * components.size() + component];
            }
        });
    }
}

std::vector<PlaneShare> planeShares(const DD::Image::ImagePlane& plane, const Image::Part& part,
                                    const std::vector<DD::Image::Channel>& channels) {
    std::vector<PlaneShare> shares;
    for (std::size_t index = 0; index < part.planes.size(); ++index) {
        const std::vector<int> components = componentsInHost(plane, part, index, channels);
        if (isNone(components))
            shares.push_back(PlaneShare::None);
        else
            shares.push_back(isComplete(components) ? PlaneShare::Whole : PlaneShare::Some);
    }
    return shares;
}

void storePlane(const DD::Image::ImagePlane& plane, Image::Part& part, const std::vector<DD::Image::Channel>& channels,
                unsigned int threads) {
    requireEverySample(part);
    const Overlap overlap(plane.bounds(), part);
    if (overlap.isEmpty()) return;
    const float* const source = plane.readable();
    for (std::size_t index = 0; index < part.planes.size(); ++index) {
        Image::Plane& target = part.planes[index];
        const std::vector<int> components = componentsInHost(plane, part, index, channels);
        if (isNone(components)) continue;
        const bool isDirect = isSameOrder(components, plane) && overlap.columns() == target.width;
        const bool isShared = !isComplete(components);
        const std::size_t samples = overlap.columns() * target.components;
        const std::size_t bytesPerPixel = target.components * Image::bytesPerSample(target.type);
        forEachRow(overlap.rows(), threads, [&](std::size_t row) {
            std::uint8_t* const to =
                target.row(overlap.fileRow(row)) + static_cast<std::size_t>(overlap.fileColumn) * bytesPerPixel;
            const float* const from = source + overlap.planeRow(row) * plane.rowStride() +
                                      static_cast<std::ptrdiff_t>(overlap.planeColumn) * plane.colStride();
            if (isDirect) {
                Image::samplesFromFloat(target.type, from, to, samples);
                return;
            }
            thread_local std::vector<float> floats;
            floats.resize(samples);
            // The other components come from, or go to, another of the host's planes.
            if (isShared) Image::samplesToFloat(target.type, to, floats.data(), samples);
            for (std::size_t component = 0; component < components.size(); ++component) {
                if (components[component] < 0) continue;
                const float* const first =
                    from + static_cast<std::ptrdiff_t>(components[component]) * plane.chanStride();
                for (std::size_t x = 0; x < overlap.columns(); ++x)
                    floats[x * components.size() + component] =
                        first[static_cast<std::ptrdiff_t>(x) * plane.colStride()];
            }
            Image::samplesFromFloat(target.type, floats.data(), to, samples);
        });
    }
}

bool exceedsIntegers(const DD::Image::ImagePlane& plane, const Image::Part& part, unsigned int threads) {
    const Overlap overlap(plane.bounds(), part);
    if (overlap.isEmpty()) return false;
    constexpr float rounding = 0.5f / 65535.0f;
    std::atomic<bool> isBeyond{false};
    forEachRow(overlap.rows(), threads, [&](std::size_t row) {
        if (isBeyond) return;
        bool isInside = true;
        for (int component = 0; component < plane.nComps(); ++component) {
            const float* const first = plane.readable() + overlap.planeRow(row) * plane.rowStride() +
                                       std::ptrdiff_t{overlap.planeColumn} * plane.colStride() +
                                       std::ptrdiff_t{component} * plane.chanStride();
            for (std::size_t x = 0; x < overlap.columns(); ++x) {
                const float value = first[static_cast<std::ptrdiff_t>(x) * plane.colStride()];
                isInside = isInside && value >= -rounding && value <= 1.0f + rounding;
            }
        }
        if (!isInside) isBeyond = true;
    });
    return isBeyond;
}

} // namespace Tools
