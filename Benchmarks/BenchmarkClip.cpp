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
        // The focus moves slowly through the clip.
        const double pull = static_cast<double>(i) / frames;
        file << fmt::format(
            "{};0,3,6,9,12,15,18;100,{:.3f},98,96,93,89,84;0,{:.4f},-0.4,-0.9,-1.6,-2.5,-3.6;;;;;;"
            "{:02}:{:02}:{:02}:{:02}\n",
            i, 99.5 - pull, -0.1 - pull * 0.1, i / 86400 % 24, i / 1440 % 60, i / 24 % 60, i % 24);
    }
    file.close();
    if (!file) throw std::runtime_error("Could not write " + path);
}
