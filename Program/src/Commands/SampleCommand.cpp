#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>

#include "ImageError.h"
#include "Progress.h"
#include "Report/Failure.h"
#include "Sample/SampleFiles.h"
#include "System/Interruption.h"

namespace Program {

using namespace Tools;

namespace {

/// `sample`: a clip to try the program on, whose correction is known exactly.
class SampleCommand : public Command {
public:
    std::string name() const override { return "sample"; }
    std::string summary() const override {
        return "Write a sample clip with its correction file and a clean reference";
    }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_folder;
    std::int32_t m_frameCount = 24;
    std::string m_size = "1920x1080";
    std::string m_progress = "auto";
};

} // namespace

std::string SampleCommand::example() const {
    return "  lenscorrect sample clip\n"
           "  lenscorrect render clip/plate.%04d.exr --distortion undistort --shading remove -o out/f.%04d.exr\n"
           "clip/README.md describes the lens and how much the result may differ from clip/clean.%04d.exr.";
}

void SampleCommand::declareOptions(CLI::App& app) {
    app.add_option("DIR", m_folder, "Folder to write to; created if missing")->required();
    app.add_option("--frames", m_frameCount, "Number of frames")->capture_default_str();
    app.add_option("--size", m_size, "Width and height in px")->capture_default_str();
    app.add_option("--progress", m_progress, "auto: a bar on a terminal, lines elsewhere; json goes to standard output")
        ->capture_default_str()
        ->check(CLI::IsMember({"auto", "bar", "lines", "json", "none"}));
}

ExitCode SampleCommand::run() {
    const PixelSize size = parsePixelSize("--size", m_size);
    const SampleClip clip(size, m_frameCount);
    const SampleFiles files(clip, size, m_folder);
    Progress progress(m_progress, static_cast<std::size_t>(clip.frameCount()));
    try {
        files.writeCorrectionFile();
        files.writeReadme();
        for (std::int32_t index = 0; index < clip.frameCount() && !Interruption::requested(); ++index) {
            files.writePlate(index);
            files.writeClean(index);
            progress.done(clip.frameNumber(index), files.platePath(index));
        }
    } catch (const Image::ImageError& error) {
        throw Failure(Failure::Kind::Output, error.what());
    }
    progress.end();
    return Interruption::requested() ? exitCodeOfSignal() : ExitCode::Done;
}

std::unique_ptr<Command> makeSampleCommand() { return std::make_unique<SampleCommand>(); }

} // namespace Program
