#include "Sample/SampleFiles.h"

#include <fmt/format.h>

#include <cstring>

#include "FrameWriter.h"
#include "System/AtomicFile.h"

namespace Tools {
namespace {

constexpr const char* readmeText =
#include "Sample/SampleReadme.md.inc"
    ;

/// Values as they stand in the file: little-endian, one after the other.
template <typename... Numbers>
std::string bytes(Numbers... numbers) {
    std::string value;
    const auto append = [&](auto number) {
        char raw[sizeof number];
        std::memcpy(raw, &number, sizeof number);
        value.append(raw, sizeof number);
    };
    (append(numbers), ...);
    return value;
}

void writePicture(const std::string& path, const Image::Frame& frame) {
    AtomicFile file(path);
    Image::writeFrame(file.temporaryPath(), frame, {.makesFile = false});
    file.commit();
}

} // namespace

SampleFiles::SampleFiles(const SampleClip& clip, PixelSize size, const std::string& folder)
    : m_clip(clip), m_size(size), m_folder(folder) {}

std::string SampleFiles::platePath(std::int32_t index) const {
    return fmt::format("{}/plate.{:04}.exr", m_folder, m_clip.frameNumber(index));
}

std::string SampleFiles::cleanPath(std::int32_t index) const {
    return fmt::format("{}/clean.{:04}.exr", m_folder, m_clip.frameNumber(index));
}

void SampleFiles::writeCorrectionFile() const { writeTextFile(m_folder + "/plate.olcf", m_clip.correctionFile()); }

void SampleFiles::writeReadme() const { writeTextFile(m_folder + "/README.md", readme()); }

void SampleFiles::writePlate(std::int32_t index) const {
    writePicture(platePath(index), frame(index, "plate", m_clip.plate(index)));
}

void SampleFiles::writeClean(std::int32_t index) const {
    writePicture(cleanPath(index), frame(index, "clean", m_clip.clean(index)));
}

Image::Frame SampleFiles::frame(std::int32_t index, const std::string& clipName,
                                const std::vector<float>& pixels) const {
    Image::Part part;
    part.dataWindow = {0, 0, static_cast<std::int32_t>(m_size.width) - 1, static_cast<std::int32_t>(m_size.height) - 1};
    part.displayWindow = part.dataWindow;
    part.compression = "zip";
    for (const char* name : {"B", "G", "R"}) {
        Image::Channel channel;
        channel.name = name;
        channel.type = Image::PixelType::Half;
        part.channels.push_back(channel);
    }
    part.layOutPlanes();
    part.allocatePixels();
    for (std::size_t row = 0; row < m_size.height; ++row) {
        part.planes.at(0).rowFromFloat(row, pixels.data() + row * m_size.width * 3);
    }
    const std::int32_t rate = 24;
    part.attributes = {
        {"timeCode", "timecode", bytes(m_clip.timecodeWord(index), std::uint32_t{0})},
        {"framesPerSecond", "rational", bytes(rate, std::uint32_t{1})},
        {"imageCounter", "int", bytes(m_clip.frameNumber(index))},
        {"reelName", "string", "A001R1AB"},
        {"clipName", "string", clipName},
        {"capDate", "string", "2020:01:01 12:00:00"},
        {"owner", "string", "Free to use for any purpose"},
        {"cameraMake", "string", "Sample"},
        {"cameraModel", "string", "Sample S35"},
        {"lensMake", "string", "Sample"},
        {"lensModel", "string", "Spherical 32 mm"},
        {"nominalFocalLength", "float", bytes(32.0f)},
        {"effectiveFocalLength", "float", bytes(static_cast<float>(m_clip.lens(index).focalLength()))},
        {"aperture", "float", bytes(2.8f)},
        {"isoSpeed", "float", bytes(800.0f)},
        {"chromaticities", "chromaticities", bytes(0.64f, 0.33f, 0.30f, 0.60f, 0.15f, 0.06f, 0.3127f, 0.3290f)},
    };
    Image::Frame frame;
    frame.format = "exr";
    frame.parts.push_back(std::move(part));
    return frame;
}

std::string SampleFiles::readme() const {
    const SampleErrorBound bound = m_clip.errorBound();
    return fmt::format(
        readmeText, fmt::arg("width", m_size.width), fmt::arg("height", m_size.height),
        fmt::arg("frames", m_clip.frameCount()), fmt::arg("sensor", m_clip.sensorWidth()),
        fmt::arg("radius", SampleClip::imageRadius), fmt::arg("halfDiagonal", m_clip.halfDiagonal()),
        fmt::arg("maximum", SamplePicture::maximum()), fmt::arg("gradient", SamplePicture::maximumGradient()),
        fmt::arg("curvature", SamplePicture::maximumCurvature()), fmt::arg("interpolation", bound.interpolation),
        fmt::arg("displacement", bound.displacement), fmt::arg("movement", bound.movement),
        fmt::arg("shading", bound.shading), fmt::arg("rounding", bound.rounding), fmt::arg("total", bound.total));
}

} // namespace Tools
