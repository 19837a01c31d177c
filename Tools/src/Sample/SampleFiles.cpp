#include "Sample/SampleFiles.h"

#include <fmt/format.h>

#include <cstring>

#include "FrameWriter.h"
#include "System/AtomicFile.h"
#include "System/TextFile.h"

namespace Tools {
namespace {

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
        R"(# Sample clip

{width} x {height} px, {frames} frames from 1001, 24 frames per second, timecode from 01:00:00:00, linear light.

| File | Content |
|---|---|
| `plate.%04d.exr` | what the camera recorded: with lens distortion and lens shading |
| `clean.%04d.exr` | the same scene through an ideal lens: what the correction should produce |
| `plate.olcf` | the correction file of the plate |

    lenscorrect render plate.%04d.exr --distortion undistort --shading remove -o corrected.%04d.exr

The corrected frames are larger than the plate where the lens compressed the picture: their display window is the plate's
format, and their data window extends beyond it. Compare the display window with the clean reference.

## The lens

- Distortion: with distances from the centre in units of the focal length f, u in the ideal and d in the recorded
  picture, d = u (1 + k1 u^2 + k2 u^4), k1 = -0.399431, k2 = 0.188924. These are the radial figures published for camera
  c0 of the Extended CMU Seasons data set (its file intrinsics.txt); they have no unit and so apply to any focal length.
- Shading: natural fall-off, the fourth power of the cosine of the field angle, 1 / (1 + u^2)^2.
- The focal length changes from 32.0 to 32.5 mm over the clip, so each frame has its own record. The image area is
  {sensor:.3f} mm wide; half its diagonal is R = {radius} mm, or h = {halfDiagonal:.2f} px.

## The picture

A sum of sines and of lines with the profile exp(-t^2 / 8), t in px across. Such a picture is smooth, so its values at
pixel centres, which the files contain, are free of aliasing. No channel exceeds M0 = {maximum:.3f}, changes by more
than M1 = {gradient:.4f} per px, or has a second derivative above M2 = {curvature:.4f} per px^2 in any direction.

## Error bound of the corrected frames

1. **Interpolation.** The correction samples the plate bilinearly. For a function with second derivatives of at most D
   along rows and columns, the error of bilinear interpolation is at most (D + D) / 8. The plate shows the picture
   stretched by at most S = the larger of u'(d) and u/d, with a bend of B per px, so D = M2 S^2 + M1 B: {interpolation:.5f}
2. **Position.** The correction knows the lens at seven heights, fits a polynomial for each direction, and rounds the
   corrected frame to whole pixels. Tracing pixels of the corrected frame through these steps and back through the lens
   shows an error of at most {displacement:.3f} px; times M1: {movement:.5f}
3. **Brightness.** The relative error of the fitted brightness curve, times M0: {shading:.5f}
4. **Storage.** Plate, reference and result are half floats, each with a relative error of at most 2^-11; times 3 M0: {rounding:.5f}

The sum is the bound for every pixel and channel of the display window, excluding two pixels at its border:

    error bound: {total:.5f}
)",
        fmt::arg("width", m_size.width), fmt::arg("height", m_size.height), fmt::arg("frames", m_clip.frameCount()),
        fmt::arg("sensor", m_clip.sensorWidth()), fmt::arg("radius", SampleClip::imageRadius),
        fmt::arg("halfDiagonal", m_clip.halfDiagonal()), fmt::arg("maximum", SamplePicture::maximum()),
        fmt::arg("gradient", SamplePicture::maximumGradient()),
        fmt::arg("curvature", SamplePicture::maximumCurvature()), fmt::arg("interpolation", bound.interpolation),
        fmt::arg("displacement", bound.displacement), fmt::arg("movement", bound.movement),
        fmt::arg("shading", bound.shading), fmt::arg("rounding", bound.rounding), fmt::arg("total", bound.total));
}

} // namespace Tools
