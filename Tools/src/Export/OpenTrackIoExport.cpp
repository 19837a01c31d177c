#include "Export/OpenTrackIoExport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "CorrectionData/Calculations/Calculations.h"
#include "Lens/LensCurves.h"
#include "Report/Dimensions.h"
#include "Timecode/Timecode.h"

namespace Tools {

namespace {

using CorrectionData::Header;
using nlohmann::ordered_json;

constexpr int stepCount = 256;

// 1 + c0·r² + c1·r⁴ + c2·r⁶ as a stand-in for a curve.
struct EvenModel {
    std::array<double, 3> coefficients{};
    double residual = 0.0; ///< largest distance from the curve, in the curve's unit
    double largestFactor = 1.0;
};

// Solves the 3 × 3 system by elimination with pivots; its matrix is one of normal equations of independent functions.
std::array<double, 3> solved(std::array<std::array<double, 4>, 3> rows) {
    for (std::size_t column = 0; column < 3; ++column) {
        std::size_t pivot = column;
        for (std::size_t row = column + 1; row < 3; ++row) {
            if (std::abs(rows[row][column]) > std::abs(rows[pivot][column])) pivot = row;
        }
        std::swap(rows[column], rows[pivot]);
        for (std::size_t row = 0; row < 3; ++row) {
            if (row == column) continue;
            const double factor = rows[row][column] / rows[column][column];
            for (std::size_t i = column; i < 4; ++i) rows[row][i] -= factor * rows[column][i];
        }
    }
    return {rows[0][3] / rows[0][0], rows[1][3] / rows[1][1], rows[2][3] / rows[2][2]};
}

// Lays weight(r) · (1 + Σ …) through target(r) for r from 0 to `end`, by least squares. Worked out for r ÷ end, where
// the powers are of one size.
template <typename Weight, typename Target>
EvenModel fittedModel(double end, Weight weight, Target target) {
    std::array<std::array<double, 4>, 3> rows{};
    const auto powers = [](double part) {
        const double square = part * part;
        return std::array<double, 3>{square, square * square, square * square * square};
    };
    for (int step = 1; step <= stepCount; ++step) {
        const double part = static_cast<double>(step) / stepCount;
        const double w = weight(part * end);
        const double rest = target(part * end) - w;
        const std::array<double, 3> basis = powers(part);
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t j = 0; j < 3; ++j) rows[i][j] += w * w * basis[i] * basis[j];
            rows[i][3] += w * basis[i] * rest;
        }
    }
    const std::array<double, 3> scaled = solved(rows);
    EvenModel model;
    for (int step = 1; step <= stepCount; ++step) {
        const double part = static_cast<double>(step) / stepCount;
        const std::array<double, 3> basis = powers(part);
        const double factor = 1.0 + scaled[0] * basis[0] + scaled[1] * basis[1] + scaled[2] * basis[2];
        model.residual = std::max(model.residual, std::abs(weight(part * end) * factor - target(part * end)));
        model.largestFactor = std::max(model.largestFactor, factor);
    }
    const double square = end * end;
    model.coefficients = {scaled[0] / square, scaled[1] / (square * square), scaled[2] / (square * square * square)};
    return model;
}

EvenModel distortionModel(double end, const Core::Polynomial& polynomial) {
    return fittedModel(
        end, [](double r) { return r; },
        [&](double r) { return static_cast<double>(polynomial.at(static_cast<float>(r))); });
}

EvenModel falloffModel(double end, const Core::Polynomial& shading) {
    return fittedModel(
        end, [](double) { return 1.0; },
        [&](double r) { return static_cast<double>(shading.at(static_cast<float>(r))) / 100.0; });
}

ordered_json distortionJson(const char* name, const EvenModel& model) {
    const auto& k = model.coefficients;
    return {{"model", name}, {"radial", {k[0], 0.0, k[1], 0.0, k[2], 0.0}}, {"overscan", model.largestFactor}};
}

// 23.976 is 24000/1001 by convention, as are the other rates a thousandth below a whole number.
ordered_json rateJson(double rate) {
    const double whole = std::ceil(rate - 1e-6);
    if (std::abs(rate - whole) < 1e-4) return {{"num", std::lround(whole)}, {"denom", 1}};
    if (std::abs(rate - whole * 1000.0 / 1001.0) < 6e-3) return {{"num", std::lround(whole) * 1000}, {"denom", 1001}};
    return {{"num", std::lround(rate * 1000.0)}, {"denom", 1000}};
}

bool hasRate(const Header& header) { return header.tcFps > 0.0f && header.tcFps <= 1000.0f; }

std::optional<ordered_json> timecodeJson(const std::string& text, const Header& header) {
    if (!hasRate(header)) return std::nullopt;
    try {
        const Timecode::Timecode timecode(text.c_str(), header.tcFps);
        if (timecode.hours > 23) return std::nullopt; // there is no such hour in the format
        return ordered_json{{"hours", timecode.hours},
                            {"minutes", timecode.minutes},
                            {"seconds", timecode.seconds},
                            {"frames", timecode.frames},
                            {"frameRate", rateJson(static_cast<double>(header.tcFps))},
                            {"subFrame", 0},
                            {"dropFrame", header.tcDrop}};
    } catch (const Timecode::InvalidTimecodeException&) {
        return std::nullopt;
    }
}

// Empty texts may not stand in a sample.
void addText(ordered_json& json, const char* key, const std::string& value) {
    if (!value.empty()) json[key] = value;
}

} // namespace

OpenTrackIoExport::OpenTrackIoExport(const CorrectionFileData& file) {
    const Header& header = file.content->header;
    const RecordingFormatDatabase::RecordingFormat& format = file.recordingFormat;
    const bool isFormatKnown = format.imageRadius > 0.0f;
    const double pixelsPerMillimetre = isFormatKnown
                                           ? halfDiagonal(format.clipResolutionWidth, format.clipResolutionHeight) /
                                                 static_cast<double>(format.imageRadius)
                                           : 0.0;

    ordered_json camera = ordered_json::object();
    addText(camera, "make", header.cameraManufacturer);
    addText(camera, "model", header.cameraModel);
    if (isFormatKnown) {
        camera["activeSensorPhysicalDimensions"] = {{"width", format.imageAreaWidth},
                                                    {"height", format.imageAreaHeight}};
        camera["activeSensorResolution"] = {{"width", format.clipResolutionWidth},
                                            {"height", format.clipResolutionHeight}};
    }
    if (hasRate(header)) camera["captureFrameRate"] = rateJson(static_cast<double>(header.tcFps));
    ordered_json lens = ordered_json::object();
    addText(lens, "make", header.lensManufacturer);
    addText(lens, "model", header.lensTypeName);
    addText(lens, "serialNumber", header.lensSerialNumber);
    if (header.lensMinFocalLength == header.lensMaxFocalLength && header.lensMinFocalLength > 0) {
        lens["nominalFocalLength"] = header.lensMinFocalLength;
    }

    ordered_json samples = ordered_json::array();
    ordered_json residuals = ordered_json::array();
    ordered_json failed = ordered_json::array();
    double undistortionOverscan = 1.0;
    double distortionOverscan = 1.0;
    for (const auto& [number, frame] : file.content->frames) {
        std::optional<LensCurves> curves;
        try {
            curves.emplace(frame);
        } catch (const CorrectionData::CoefficentCalculationFailedException&) {
            failed.push_back(number);
            ++failedCount;
            continue;
        }
        const float radius = isFormatKnown ? format.imageRadius : curves->lastHeight();
        const Core::DistortionPolynomials& distortion = curves->distortion();
        const EvenModel corrected = distortionModel(static_cast<double>(radius), distortion.distorted);
        const EvenModel recorded =
            distortionModel(static_cast<double>(distortion.distorted.at(radius)), distortion.undistorted);
        const EvenModel falloff = falloffModel(static_cast<double>(radius), curves->shading());
        undistortionOverscan = std::max(undistortionOverscan, corrected.largestFactor);
        distortionOverscan = std::max(distortionOverscan, recorded.largestFactor);

        const auto& a = falloff.coefficients;
        ordered_json sample = {
            {"protocol", {{"name", "OpenTrackIO"}, {"version", {1, 0, 0}}}},
            {"static", nullptr},
            {"timing", ordered_json::object()},
            {"lens",
             {{"distortion",
               {distortionJson("Brown-Conrady D-U", corrected), distortionJson("Brown-Conrady U-D", recorded)}},
              {"exposureFalloff", {{"a1", -a[0]}, {"a2", -a[1]}, {"a3", -a[2]}}},
              {"distortionOffset", {{"x", 0.0}, {"y", 0.0}}},
              {"projectionOffset", {{"x", 0.0}, {"y", 0.0}}}}}};
        if (hasRate(header)) sample["timing"]["sampleRate"] = rateJson(static_cast<double>(header.tcFps));
        if (auto timecode = timecodeJson(frame.timecode, header)) sample["timing"]["timecode"] = std::move(*timecode);
        samples.push_back(std::move(sample));
        residuals.push_back({{"frame", number},
                             {"distortedToUndistorted", corrected.residual},
                             {"undistortedToDistorted", recorded.residual},
                             {"exposureFalloff", falloff.residual}});
        correctedMillimetres = std::max(correctedMillimetres, corrected.residual);
        recordedMillimetres = std::max(recordedMillimetres, recorded.residual);
        falloffPercent = std::max(falloffPercent, 100.0 * falloff.residual);
    }
    correctedPixels = correctedMillimetres * pixelsPerMillimetre;
    recordedPixels = recordedMillimetres * pixelsPerMillimetre;

    lens["distortionOverscanMax"] = distortionOverscan;
    lens["undistortionOverscanMax"] = undistortionOverscan;
    for (ordered_json& sample : samples) sample["static"] = {{"camera", camera}, {"lens", lens}};
    document = {{"version", 1},
                {"clip", header.videoFileName},
                {"largestResidual",
                 {{"distortedToUndistorted", correctedMillimetres},
                  {"undistortedToDistorted", recordedMillimetres},
                  {"exposureFalloff", falloffPercent / 100.0}}},
                {"failedFrames", std::move(failed)},
                {"residuals", std::move(residuals)},
                {"samples", std::move(samples)}};
}

} // namespace Tools
