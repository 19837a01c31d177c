#include "Verify/RoundTripReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace Tools {

namespace {

using nlohmann::ordered_json;

ordered_json number(double value) {
    if (!std::isfinite(value)) return nullptr;
    return value;
}

ordered_json optionalNumber(const std::optional<double>& value) { return value ? number(*value) : nullptr; }

ordered_json sizeJson(const Image::Window& window) { return {{"width", window.width()}, {"height", window.height()}}; }

ordered_json errorsJson(const RoundTrip& frame) {
    return {{"analytic", number(frame.analytic)},
            {"maps", number(frame.maps)},
            {"rendered", optionalNumber(frame.rendered)},
            {"toCorrectedResidual", number(frame.toCorrectedResidual)},
            {"toRecordedResidual", number(frame.toRecordedResidual)},
            {"deviation", number(frame.deviation)}};
}

ordered_json frameJson(const RoundTrip& frame, const std::optional<double>& tolerance) {
    ordered_json json = {{"frame", frame.frame}, {"ok", true}};
    if (!frame.file.empty()) json["file"] = frame.file;
    json["exceeded"] = tolerance && !(frame.largestError() <= *tolerance);
    json["format"] = {{"width", frame.format.width}, {"height", frame.format.height}};
    json["undistorted"] = sizeJson(frame.undistorted);
    json["redistorted"] = sizeJson(frame.redistorted);
    json["imageRadius"] = number(frame.imageRadius);
    json["lastHeight"] = number(frame.lastHeight);
    json["errors"] = errorsJson(frame);
    return json;
}

/// The frame for which a value is largest; one that is not a number counts as larger than all.
template <typename Value>
const RoundTrip& worst(const std::vector<RoundTrip>& frames, Value value) {
    const auto isBetter = [&](const RoundTrip& a, const RoundTrip& b) {
        const double x = value(a);
        const double y = value(b);
        if (std::isnan(x) || std::isnan(y)) return !std::isnan(x) && std::isnan(y);
        return x < y;
    };
    return *std::max_element(frames.begin(), frames.end(), isBetter);
}

template <typename Value>
std::string worstLine(const std::vector<RoundTrip>& frames, const char* name, const char* what, Value value) {
    const RoundTrip& frame = worst(frames, value);
    return fmt::format("{:<22}{:>10.4f} px  {} (frame {})\n", name, value(frame), what, frame.frame);
}

} // namespace

std::size_t RoundTripReport::exceededCount() const {
    if (!tolerance) return 0;
    return static_cast<std::size_t>(std::count_if(frames.begin(), frames.end(), [this](const RoundTrip& frame) {
        return !(frame.largestError() <= *tolerance);
    }));
}

std::string RoundTripReport::text(bool withFrames) const {
    std::string text;
    if (!frames.empty()) {
        const RoundTrip& first = frames.front();
        text += fmt::format("Largest round-trip errors over {} frames of {} x {} px:\n", frames.size(),
                            first.format.width, first.format.height);
        text += worstLine(frames, "Curves", "round-trip error of the curves",
                          [](const RoundTrip& frame) { return frame.analytic; });
        text += worstLine(frames, "Maps", "round-trip error of the nodes' sampling",
                          [](const RoundTrip& frame) { return frame.maps; });
        if (first.rendered) {
            text += worstLine(frames, "Rendered", "round-trip error of pixels rendered by both nodes",
                              [](const RoundTrip& frame) { return frame.rendered.value_or(0.0); });
        }
        text += worstLine(frames, "Fit, corrected", "deviation of the curve from the measured points",
                          [](const RoundTrip& frame) { return frame.toCorrectedResidual; });
        text += worstLine(frames, "Fit, recorded", "the same for its inverse",
                          [](const RoundTrip& frame) { return frame.toRecordedResidual; });
        text += worstLine(frames, "Deviation", "of the node's undistorted picture from the ideal one",
                          [](const RoundTrip& frame) { return frame.deviation; });
        const RoundTrip& outer =
            worst(frames, [](const RoundTrip& frame) { return frame.imageRadius - frame.lastHeight; });
        if (outer.imageRadius > outer.lastHeight) {
            text += fmt::format(
                "Warning: the frame's corner lies at {:.3f} mm, beyond the last measured height of {:.3f} "
                "mm (frame {}); beyond it the curves are extrapolated.\n",
                outer.imageRadius, outer.lastHeight, outer.frame);
        }
    }
    if (withFrames) {
        text += fmt::format("\n{:>8}  {:>10}  {:>10}  {:>10}  {:>10}\n", "Frame", "Curves", "Maps", "Rendered",
                            "Deviation");
        for (const RoundTrip& frame : frames) {
            text +=
                fmt::format("{:>8}  {:>10.4f}  {:>10.4f}  {:>10}  {:>10.4f}\n", frame.frame, frame.analytic, frame.maps,
                            frame.rendered ? fmt::format("{:.4f}", *frame.rendered) : "-", frame.deviation);
        }
    }
    if (tolerance) {
        text += fmt::format("{} of {} frames are within {} px.\n", frames.size() - exceededCount(),
                            frames.size() + failures.size(), *tolerance);
    }
    return text;
}

nlohmann::ordered_json RoundTripReport::json() const {
    ordered_json json = {{"version", 1},
                         {"input", input},
                         {"tolerance", optionalNumber(tolerance)},
                         {"frameCount", frames.size() + failures.size()},
                         {"failedCount", failures.size()},
                         {"exceededCount", exceededCount()},
                         {"frames", ordered_json::array()}};
    for (const RoundTrip& frame : frames) json["frames"].push_back(frameJson(frame, tolerance));
    for (const auto& [frame, message] : failures) {
        json["frames"].push_back({{"frame", frame}, {"ok", false}, {"error", message}});
    }
    return json;
}

} // namespace Tools
