#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Options.h"
#include "Progress.h"
#include "Report/Failure.h"
#include "Report/Json.h"
#include "Report/PrintableText.h"
#include "System/Interruption.h"
#include "System/RenderingDevice.h"
#include "Verify/RoundTripReport.h"

namespace Program {

using namespace Tools;

namespace {

/// `verify`: how exactly undistorting and distorting again restores a frame.
class VerifyCommand : public Command {
public:
    std::string name() const override { return "verify"; }
    std::string summary() const override { return "Measure how accurately a correction can be undone"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;

    /// SomeFramesFailed if a frame cannot be verified or misses by more than the tolerance.
    ExitCode run() override;

private:
    LensOptionsReader m_lens;
    std::optional<double> m_tolerance;
    std::string m_device;
    bool m_isRendered = false;
    bool m_withFrames = false;
    bool m_asJson = false;
};

} // namespace

std::string VerifyCommand::example() const {
    return "  lenscorrect verify plate.%04d.exr --tolerance 0.1\n"
           "  lenscorrect verify A001C002.olcf --size 4096x2160 --render --json";
}

void VerifyCommand::declareOptions(CLI::App& app) {
    m_lens.declareOptions(app);
    app.add_option("--tolerance", m_tolerance, "Exit with 1 if a round-trip error exceeds this many px");
    app.add_flag("--render", m_isRendered, "Also render a test picture through both corrections");
    declareDevice(app, m_device);
    app.add_flag("--list", m_withFrames, "Report each frame");
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/verify.json)");
}

ExitCode VerifyCommand::run() {
    const LensOptions options = m_lens.read();
    if (m_tolerance && !(*m_tolerance >= 0.0))
        refuse(fmt::format("--tolerance {}: give a length in px, 0 or more.", *m_tolerance));
    const RenderingDevice device(m_device);
    tell(device.notice());
    LensGeometry lens(options);
    device.check();

    RoundTripReport report;
    report.input = options.input;
    report.tolerance = m_tolerance;
    std::string advice;
    for (const std::int32_t frame : lens.frames()) {
        if (Interruption::requested()) return exitCodeOfSignal();
        try {
            report.frames.push_back(roundTrip(lens, frame, m_isRendered));
        } catch (const std::exception& exception) {
            report.failures[frame] = lens.message(frame, exception);
            if (advice.empty()) advice = lens.advice(exception);
        }
    }
    for (const auto& [frame, message] : report.failures) tell(message);
    if (report.frames.empty() && !advice.empty()) fmt::print(stderr, "{}\n", advice);
    if (m_asJson) {
        fmt::print("{}\n", jsonText(report.json()));
    } else {
        fmt::print("{}", printableText(report.text(m_withFrames)));
    }
    return report.failures.empty() && report.exceededCount() == 0 ? ExitCode::Done : ExitCode::SomeFramesFailed;
}

std::unique_ptr<Command> makeVerifyCommand() { return std::make_unique<VerifyCommand>(); }

} // namespace Program
