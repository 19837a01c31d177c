// Removes the shading of a white frame by a record with 50 % light in the corners, and prints a corner's value.
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "Core/Core.h"

namespace {

constexpr unsigned int width = 192;
constexpr unsigned int height = 108;

constexpr char record[] = R"({
    "recordingFormat": {
        "camera": {"manufacturer": "Maker", "model": "Camera"},
        "clipResolution": {"width": 192, "height": 108},
        "imageRadius": 12.8
    },
    "frameData": {
        "interpolationPoints": {
            "heights": [0, 2, 4, 6, 8, 10, 12.8],
            "shading": [100, 98, 92, 83, 73, 62, 50],
            "radialDistortion": [0, 0, 0, 0, 0, 0, 0]
        }
    }
})";

class WhiteFrame : public Core::CoreDataSource {
public:
    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override {
        parameter = {};
        return true;
    }
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter&) const override { return false; }
    bool frameMetadata(char* metadata, unsigned long capacity) const override {
        if (sizeof(record) > capacity) return false;
        std::memcpy(metadata, record, sizeof(record));
        return true;
    }
    bool correctionFilePath(char*, unsigned long) const override { return false; }
    bool clipFileName(char*, unsigned long) const override { return false; }
    bool clipFilePath(char*, unsigned long) const override { return false; }
    bool frameData(Core::FrameData& frameData) const override {
        frameData.width = width;
        frameData.height = height;
        return true;
    }
    bool recordingFormat(RecordingFormatDatabase::RecordingFormat& recordingFormat) const override {
        recordingFormat = {22.0f, 13.0f, width, height, 12.8f};
        return true;
    }
};

} // namespace

int main() {
    Core::Core core(std::make_unique<WhiteFrame>());
    const std::vector<float> input(width * height * 4, 1.0f);
    std::vector<float> output(input.size());
    if (core.render(input.data(), output.data(), output.size() * sizeof(float))) {
        std::printf("A corner of the white frame is %.2f.\n", static_cast<double>(output[0]));
        return 0;
    }
    char text[4096] = "";
    core.detailedErrorDescription(text, sizeof(text));
    std::printf("%s", text);
    return 1;
}
