#include <gtest/gtest.h>

#include <cmath>

#include "Chain/PlaneTransfer.h"
#include "Core/CorrectionPolynomials.h"
#include "FrameWriter.h"
#include "Lens/LensGeometry.h"
#include "Map/MapPicture.h"
#include "Support/CorrectionFileText.h"
#include "Support/FloatPicture.h"
#include "Support/OpenCLDevice.h"
#include "Support/TemporaryFolder.h"

using Tools::Direction;
using Tools::FrameGeometry;
using Tools::Geometry;
using Tools::LensGeometry;
using Tools::LensOptions;

namespace {

constexpr const char* barrel = "0,-1.2,-4.8,-11,-19,-28,-40";
constexpr const char* pincushion = "0,0.9,3.6,8,14,21,29";

struct Case {
    const char* name;
    Tools::PixelSize size;
    const char* distortion; ///< ‰ at the heights 0, 3, 6, 9, 11, 13, 15 mm
    Direction direction;
    std::int32_t margin = 0;          ///< px by which the data window reaches beyond the format
    std::optional<float> inside = {}; ///< %, overscan inside the format
};

const float* row(const Image::Part& part, std::int64_t y) {
    return reinterpret_cast<const float*>(part.planes[0].row(static_cast<std::size_t>(y - part.dataWindow.minY)));
}

/// Waves of 40 px: no channel changes by more than 0.08 from a pixel to the next.
Image::Part waves(const Image::Window& window, const Image::Window& format) {
    Image::Part part = floatPicture(window, format);
    for (std::int32_t y = window.minY; y <= window.maxY; ++y) {
        auto* pixel = reinterpret_cast<float*>(part.planes[0].row(static_cast<std::size_t>(y - window.minY)));
        for (std::int32_t x = window.minX; x <= window.maxX; ++x) {
            constexpr double frequency = 2.0 * 3.14159265358979 / 40.0;
            *pixel++ = static_cast<float>(0.5 + 0.5 * std::sin(frequency * x));
            *pixel++ = static_cast<float>(0.5 + 0.5 * std::sin(frequency * y));
            *pixel++ = static_cast<float>(0.5 + 0.25 * std::cos(frequency * (x + y)));
            *pixel++ = 1.0f;
        }
    }
    return part;
}

/// What another program makes of the picture with a map of the usual convention: bilinear, black outside.
Image::Part warped(const Image::Part& source, const Image::Part& map) {
    Image::Part result = floatPicture(map.dataWindow, map.displayWindow);
    const Image::Window& window = source.dataWindow;
    for (std::int32_t y = map.dataWindow.minY; y <= map.dataWindow.maxY; ++y) {
        const float* place = row(map, y);
        auto* pixel = reinterpret_cast<float*>(result.planes[0].row(static_cast<std::size_t>(y - map.dataWindow.minY)));
        for (std::int32_t x = map.dataWindow.minX; x <= map.dataWindow.maxX; ++x, place += 4, pixel += 4) {
            const double sx = double(place[0]) * double(map.displayWindow.width()) - 0.5;
            const double sy = (1.0 - double(place[1])) * double(map.displayWindow.height()) - 0.5;
            const double left = std::floor(sx), top = std::floor(sy);
            double sum[4] = {};
            for (const int j : {0, 1}) {
                for (const int i : {0, 1}) {
                    const double tapX = left + i, tapY = top + j;
                    if (tapX < window.minX || tapX > window.maxX || tapY < window.minY || tapY > window.maxY) continue;
                    const double weight = (1.0 - std::abs(sx - tapX)) * (1.0 - std::abs(sy - tapY));
                    const float* const tap = row(source, std::int64_t(tapY)) + (std::int64_t(tapX) - window.minX) * 4;
                    for (int channel = 0; channel < 4; ++channel) sum[channel] += weight * double(tap[channel]);
                }
            }
            for (int channel = 0; channel < 4; ++channel) pixel[channel] = static_cast<float>(sum[channel]);
        }
    }
    return result;
}

double largestDifference(const Image::Part& a, const Image::Part& b) {
    double largest = 0.0;
    for (std::int32_t y = a.dataWindow.minY; y <= a.dataWindow.maxY; ++y) {
        for (std::int64_t i = 0; i < a.dataWindow.width() * 4; ++i) {
            largest = std::max(largest, std::abs(double(row(a, y)[i]) - double(row(b, y)[i])));
        }
    }
    return largest;
}

class MapAgainstNode : public testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        if (!openCLDeviceExists()) GTEST_SKIP() << "no OpenCL device here";
        const Case& given = GetParam();
        const auto width = static_cast<std::int32_t>(given.size.width);
        const auto height = static_cast<std::int32_t>(given.size.height);
        const std::int32_t marginY = given.margin * height / width;
        const Image::Window format{0, 0, width - 1, height - 1};
        m_picture = waves({-given.margin, -marginY, width - 1 + given.margin, height - 1 + marginY}, format);
        Image::Frame frame;
        frame.parts = {m_picture};
        const std::string text = Support::CorrectionFileText()
                                     .with("sensorWidth", "24")
                                     .with("clipName", "plate")
                                     .with("clipWidth", std::to_string(width))
                                     .with("clipHeight", std::to_string(height))
                                     .withFrameLine(std::string("0;0,3,6,9,11,13,15;100,99,96,92,88,84,80;") +
                                                    given.distortion + ";;;;;;00:00:00:00")
                                     .string();
        m_options.correctionFile = m_folder.write("plate.olcf", text);
        m_options.overscan = given.inside;
        m_options.input = m_folder.path("plate.1.exr");
        Image::writeFrame(m_options.input, frame);
    }

    /// The node's picture in the same windows as the map's.
    Image::Part rendered(const Image::Window& box) {
        Tools::ChainSettings options;
        options.correctionFile = m_options.correctionFile;
        options.overscan = m_options.overscan;
        options.distortion = GetParam().direction == Direction::Undistort ? Tools::ChainSettings::Distortion::Undistort
                                                                          : Tools::ChainSettings::Distortion::Distort;
        Tools::CorrectionChain chain(options, 1);
        const Tools::Clip clip(m_options.input);
        Image::Frame frame;
        clip.read(1, frame, 1);
        const Image::Metadata metadata = clip.metadata(1, frame);
        const Tools::ClipFrame shown{&frame, &metadata, clip.path(1), clip.range()};
        chain.setFrame(1, shown, 0, shown);
        const Image::Window window = Tools::fileWindow(chain.validate().kept, m_picture.displayWindow);
        EXPECT_EQ(window, box);
        Image::Part result = floatPicture(window, m_picture.displayWindow);
        chain.render([&](const DD::Image::ImagePlane& plane, const std::vector<DD::Image::Channel>& channels) {
            Tools::storePlane(plane, result, channels, 1);
        });
        return result;
    }

    Support::TemporaryFolder m_folder;
    LensOptions m_options;
    Image::Part m_picture;
};

} // namespace

TEST_P(MapAgainstNode, WarpsAsTheNodeRenders) {
    const Direction direction = GetParam().direction;
    const FrameGeometry geometry = LensGeometry(m_options).geometry(1, direction);
    const Image::Part map = mapPicture({direction, Geometry::Node, {}}, geometry, std::nullopt, 1).parts[0];
    const Image::Part expected = rendered(map.dataWindow);
    // The node's places are single precision: at 700 px a step is 6e-5 px, of which its polynomial collects some ten;
    // at the picture's border, where it fades to black, a pixel changes by 1 over 1 px.
    EXPECT_LT(largestDifference(warped(m_picture, map), expected), 1e-3);

    Tools::MapConvention other;
    other.centre = Tools::MapConvention::Centre::None;
    const Image::Part shifted = mapPicture({direction, Geometry::Node, other}, geometry, std::nullopt, 1).parts[0];
    EXPECT_GT(largestDifference(warped(m_picture, shifted), expected), 0.05) << "half a pixel would not show";
}

TEST_P(MapAgainstNode, IdeallyReadsTheMeasuredPoints) {
    const Direction direction = GetParam().direction;
    const FrameGeometry geometry = LensGeometry(m_options).geometry(1, direction);
    const Tools::RadialSampling ideal = geometry.sampling(Geometry::Ideal);
    // 24 mm are as wide as the recorded frame, which is 640 px of 704 where the format has 10 % overscan inside.
    const double recordedWidth = GetParam().inside ? 640.0 : GetParam().size.width;
    const double pixelsPerMillimetre = recordedWidth / 24.0;
    const std::vector<float>& recorded = geometry.lens.record.heights;
    const std::vector<float> corrected = Core::distortedHeights(geometry.lens.record);
    for (std::size_t point = 0; point < recorded.size(); ++point) {
        const double from = double(direction == Direction::Undistort ? corrected[point] : recorded[point]);
        const double to = double(direction == Direction::Undistort ? recorded[point] : corrected[point]);
        // Coefficients in single precision: 1e-7 of some 400 px, and a multiple of it at the outer points.
        EXPECT_NEAR(ideal.sourceDistance(from * pixelsPerMillimetre), to * pixelsPerMillimetre, 1e-3) << point;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MapAgainstNode,
    testing::Values(Case{"UndistortsABarrelIntoALargerBox", {640, 360}, barrel, Direction::Undistort},
                    Case{"UndistortsAPincushionWithinTheFormat", {640, 360}, pincushion, Direction::Undistort},
                    Case{"RedistortsABarrelWithinTheFormat", {640, 360}, barrel, Direction::Redistort},
                    Case{"RedistortsAPincushionIntoALargerBox", {640, 360}, pincushion, Direction::Redistort},
                    Case{"UndistortsADataWindowWithOverscan", {640, 360}, barrel, Direction::Undistort, 32},
                    Case{"RedistortsADataWindowWithOverscan", {640, 360}, barrel, Direction::Redistort, 32},
                    Case{"UndistortsOverscanInsideTheFormat", {704, 396}, barrel, Direction::Undistort, 0, 10.0f},
                    Case{"UndistortsOddSizes", {641, 361}, barrel, Direction::Undistort},
                    Case{"RedistortsOddSizes", {511, 413}, pincushion, Direction::Redistort}),
    [](const auto& given) { return given.param.name; });
