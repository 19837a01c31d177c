#include "LensfunPeer.h"

#include <lensfun/lensfun.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "Renderer/NativeKernels.h"

namespace {

class Correction {
public:
    Correction(const ComparedFrame& frame, int flags) {
        m_lens.Type = LF_RECTILINEAR;
        m_lens.CropFactor = 1.0f;
        m_lens.AspectRatio = static_cast<float>(frame.width) / static_cast<float>(frame.height);
        lfLensCalibDistortion distortion = {};
        distortion.Model = LF_DIST_MODEL_PTLENS;
        distortion.Focal = 40.0f;
        distortion.Terms[0] = 0.005f;
        distortion.Terms[1] = -0.02f;
        distortion.Terms[2] = 0.01f;
        m_lens.AddCalibDistortion(&distortion);
        lfLensCalibVignetting vignetting = {};
        vignetting.Model = LF_VIGNETTING_MODEL_PA;
        vignetting.Focal = 40.0f;
        vignetting.Aperture = 2.8f;
        vignetting.Distance = 10.0f;
        vignetting.Terms[0] = -0.2f;
        m_lens.AddCalibVignetting(&vignetting);
        m_modifier = std::make_unique<lfModifier>(&m_lens, 1.0f, frame.width, frame.height);
        m_modifier->Initialize(&m_lens, LF_PF_F32, 40.0f, 2.8f, 10.0f, 1.0f, LF_RECTILINEAR, flags, false);
    }

    const lfModifier& modifier() const { return *m_modifier; }

private:
    lfLens m_lens;
    std::unique_ptr<lfModifier> m_modifier;
};

template <typename Row>
void onRows(const ComparedFrame& frame, const Row& row) {
    std::vector<std::thread> threads;
    for (unsigned int share = 0; share < frame.threads; share++)
        threads.emplace_back([&, share] {
            const auto begin = [&](unsigned int i) {
                return static_cast<int>(static_cast<std::int64_t>(frame.height) * i / frame.threads);
            };
            std::vector<float> positions(static_cast<std::size_t>(frame.width) * 2);
            for (int y = begin(share); y < begin(share + 1); y++) row(y, positions.data());
        });
    for (std::thread& thread : threads) thread.join();
}

} // namespace

void LensfunPeer::addTo(InterleavedRun& run, const ComparedFrame& frame) {
    auto geometry = std::make_shared<Correction>(frame, LF_MODIFY_DISTORTION);
    auto vignetting = std::make_shared<Correction>(frame, LF_MODIFY_VIGNETTING);
    const std::size_t rowLength = static_cast<std::size_t>(frame.width) * 4;
    run.add("lensfun geometry and bilinear loop", [=, &frame] {
        onRows(frame, [&](int y, float* positions) {
            geometry->modifier().ApplyGeometryDistortion(0, static_cast<float>(y), frame.width, 1, positions);
            NativeKernels::sampleRow(frame.input, frame.width, frame.height, positions,
                                     frame.output + static_cast<std::size_t>(y) * rowLength);
        });
    });
    run.add("lensfun vignetting", [=, &frame] {
        onRows(frame, [&](int y, float*) {
            float* const row = frame.output + static_cast<std::size_t>(y) * rowLength;
            // It works in place.
            std::memcpy(row, frame.input + static_cast<std::size_t>(y) * rowLength, rowLength * sizeof(float));
            vignetting->modifier().ApplyColorModification(row, 0, static_cast<float>(y), frame.width, 1,
                                                          LF_CR_4(RED, GREEN, BLUE, UNKNOWN),
                                                          static_cast<int>(rowLength * sizeof(float)));
        });
    });
}
