#include "BenchmarkClip.h"

#include <fmt/format.h>

#include <fstream>
#include <stdexcept>

void BenchmarkClip::writeCorrectionFile(const std::string& path, int width, int height, unsigned int frames) {
    std::ofstream file(path, std::ios::binary);
    file << fmt::format(
        "# OLCF Version 3\nHEADER_START\nlensManufacturer:=Maker\nlensTypeName:=Prime "
        "40\nlensSerialNumber:=1\nlensMinFocalLength:=40\nlensMaxFocalLength:=40\n"
        "cameraManufacturer:=Maker\ncameraModel:=Model\nsensorWidth:=27\nclipName:=A001C001\n"
        "videoFileName:=A001C001\nclipDurationFrames:={}\nclipWidth:={}\nclipHeight:={}\ntcFps:=24\n"
        "tcDrop:=0\nenableLensShadingCorrection:=1\nshadingGamma:=1\nenableLensDistortionCorrection:=1\n"
        "distortionZoom:=1\nHEADER_END\nframe;heights;shading;distortion;;;;;;timecode\n",
        frames, width, height);
    for (unsigned int i = 0; i < frames; i++) {
        // The focus moves slowly through the clip. Values have the decimals of measured ones.
        const double pull = static_cast<double>(i) / frames;
        std::string heights = "0.0000", shading = "100.0000", distortion = "0.0000";
        for (int place = 3; place <= 18; place += 3) {
            const double squared = place * place / 324.0;
            heights += fmt::format(",{:.4f}", static_cast<double>(place));
            shading += fmt::format(",{:.4f}", 100.0 - (15.0 + pull) * squared);
            distortion += fmt::format(",{:.4f}", -(3.5 + 0.1 * pull) * squared);
        }
        file << fmt::format("{};{};{};{};;;;;;{:02}:{:02}:{:02}:{:02}\n", i, heights, shading, distortion,
                            i / 86400 % 24, i / 1440 % 60, i / 24 % 60, i % 24);
    }
    file.close();
    if (!file) throw std::runtime_error("Could not write " + path);
}
