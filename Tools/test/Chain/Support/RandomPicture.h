#pragma once

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Chain/ChainSettings.h"
#include "Chain/FramePlan.h"

/// A picture of any format and data window, with a lens of any strength, as the tests draw them.
struct RandomPicture {
    Tools::PixelSize clip; ///< the recording format's resolution
    Tools::PictureShape shape;
    Tools::Steps steps = Tools::Steps::Distortion;
    bool isInverse = false; ///< the lens is put back
    std::string record;     ///< the frame's own lens record, JSON

    /// `longest`: of a format's sides.
    RandomPicture(std::mt19937& random, int longest) {
        const auto real = [&](double from, double to) { return std::uniform_real_distribution<>(from, to)(random); };
        const auto whole = [&](int from, int to) { return std::uniform_int_distribution<>(from, to)(random); };

        static constexpr double shapes[] = {16.0 / 9, 4096.0 / 2160, 4448.0 / 3096, 4.0 / 3, 6.0 / 5, 1.0, 9.0 / 16};
        const double aspect = whole(0, 1) == 0 ? shapes[whole(0, 6)] : real(0.5, 2.8);
        const int width = whole(longest / 16, longest);
        clip.width = static_cast<std::uint32_t>(width);
        clip.height = static_cast<std::uint32_t>(std::lround(width / aspect));
        shape.format = clip;
        if (whole(0, 3) == 0) shape.format = {clip.width * 2, clip.height * 2}; // CG of twice the size
        const int w = static_cast<int>(shape.format.width);
        const int h = static_cast<int>(shape.format.height);

        const double overhang = real(0.0, 0.15);
        const auto margin = [&](int length) {
            switch (whole(0, 2)) {
                case 0:
                    return 0;
                case 1:
                    return static_cast<int>(-overhang * length);
                default:
                    return static_cast<int>(real(-overhang, 0.45) * length);
            }
        };
        // One after the other: in which order arguments are drawn is the compiler's choice.
        const int left = margin(w), bottom = margin(h), right = margin(w), top = margin(h);
        shape.data = DD::Image::Box(left, bottom, w - right, h - top);
        if (whole(0, 9) == 0) shape.overscan = static_cast<float>(real(0.0, 20.0));

        isInverse = whole(0, 1) == 1;
        switch (whole(0, 3)) {
            case 0:
                steps = Tools::Steps::Shading;
                break;
            case 1:
                steps = isInverse ? Tools::Steps::DistortionThenShading : Tools::Steps::ShadingThenDistortion;
                break;
            default:
                break;
        }

        // ‰ at the corner: barrel, pincushion, a mixture of both, or none.
        const bool isStraight = whole(0, 9) == 0;
        const double square = isStraight ? 0.0 : real(-90.0, 90.0);
        const double fourth = isStraight || whole(0, 1) == 0 ? 0.0 : real(-40.0, 40.0);
        const double radius = real(6.0, 22.0);
        std::string heights, shading, distortion;
        for (int i = 0; i < 7; ++i) {
            const double x = i / 6.0;
            const char* const comma = i == 0 ? "" : ", ";
            heights += comma + std::to_string(radius * x);
            shading += comma + std::to_string(100.0 - 30.0 * x * x);
            distortion += comma + std::to_string(square * x * x + fourth * x * x * x * x);
        }
        record = R"({"recordingFormat": {"camera": {"manufacturer": "", "model": ""}, "clipResolution": {"width": )" +
                 std::to_string(clip.width) + R"(, "height": )" + std::to_string(clip.height) +
                 R"(}, "imageRadius": )" + std::to_string(radius) +
                 R"(}, "frameData": {"interpolationPoints": {"heights": [)" + heights + R"(], "shading": [)" + shading +
                 R"(], "radialDistortion": [)" + distortion + "]}}}";
    }

    bool wantsShading() const { return steps != Tools::Steps::Distortion; }
    bool wantsDistortion() const { return steps != Tools::Steps::Shading; }

    std::string string() const {
        const DD::Image::Box& d = shape.data;
        const auto number = [](auto value) { return std::to_string(value) + " "; };
        return "clip " + number(clip.width) + number(clip.height) + "format " + number(shape.format.width) +
               number(shape.format.height) + "data " + number(d.x()) + number(d.y()) + number(d.r()) + number(d.t()) +
               "overscan " + (shape.overscan ? number(*shape.overscan) : "- ") + "steps " +
               number(static_cast<int>(steps)) + (isInverse ? "inverse " : "") + record;
    }
};

/// Answers the core for such a picture, as planFrame asks for it.
class RandomPictureSource : public Core::CoreDataSource {
public:
    explicit RandomPictureSource(const RandomPicture& picture) : m_picture(picture) {}

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override {
        parameter.addShading = m_picture.isInverse;
        return m_picture.wantsShading();
    }
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override {
        parameter.distort = m_picture.isInverse;
        return m_picture.wantsDistortion();
    }
    bool frameMetadata(char* metadata, unsigned long capacity) const override {
        if (m_picture.record.size() + 1 > capacity) return false;
        std::memcpy(metadata, m_picture.record.c_str(), m_picture.record.size() + 1);
        return true;
    }
    bool correctionFilePath(char*, unsigned long) const override { return false; }
    bool clipFileName(char*, unsigned long) const override { return false; }
    bool clipFilePath(char*, unsigned long) const override { return false; }
    bool frameData(Core::FrameData& frameData) const override {
        frameData = {};
        frameData.width = m_picture.shape.format.width;
        frameData.height = m_picture.shape.format.height;
        return true;
    }
    bool recordingFormat(RecordingFormatDatabase::RecordingFormat&) const override { return false; }

private:
    const RandomPicture& m_picture;
};
