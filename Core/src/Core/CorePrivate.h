#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Core/Core.h"
#include "Core/ExtendedManagedContainer.h"
#include "Core/PolynomialCache.h"
#include "CorrectionData/Content.h"
#include "Renderer/DistortionParameter.h"
#include "Renderer/ShadingParameter.h"

namespace Core {

/// Does the facade's work; its operations throw where the facade's answer false.
///
/// Threads: three locks, never two at once but in the order given. `m_mutex`: this object's container and its questions
/// to the data source. The container manager's lock, one per process: everything that may reach correction files. And
/// on its own `rendererAccessLock`, one per process: the renderers. It is taken twice per operation, so that one
/// caller's preparation can come between another's preparation and rendering; what a caller renders with are therefore
/// its own parameter blocks, written again before it renders.
class Core::CorePrivate {
public:
    explicit CorePrivate(std::unique_ptr<CoreDataSource> dataSource);
    ~CorePrivate();

    void frameSize(unsigned int& width, unsigned int& height);
    void render(const float* input, float* output, unsigned long size);
    RecordingFormatDatabase::RecordingFormat recordingFormat();

private:
    /// Where a container's data come from, and by which texts it was chosen.
    struct ContainerSource {
        enum class Kind { None, CorrectionFile, FrameMetadata, ClipFile };

        Kind kind = Kind::None;
        std::string first;
        std::string second;
    };

    /// The parameter blocks of the corrections that are wanted.
    struct Preparation {
        std::optional<Renderer::ShadingParameter> shading;
        std::optional<Renderer::DistortionParameter> distortion;
    };

    /// What the preparation works with.
    struct FrameToCorrect {
        RecordingFormatDatabase::RecordingFormat recordingFormat;
        FrameData frameData;
        CorrectionData::Frame record;
    };

    Preparation prepareRendererIfNeeded();
    FrameToCorrect retrieveFrameToCorrect();
    RecordingFormatDatabase::RecordingFormat retrieveRecordingFormat();
    FrameData retrieveFrameData() const;
    CorrectionData::Frame retrieveCorrectionFrameData(const FrameData& frameData);

    ExtendedManagedContainer* extendedManagedContainer();
    ContainerSource containerSource() const;

    Renderer::ShadingParameter shadingParameter(const ShadingCorrectionParameter& wanted, const FrameToCorrect& frame);
    Renderer::DistortionParameter distortionParameter(const DistortionCorrectionParameter& wanted,
                                                      const FrameToCorrect& frame);

    const std::unique_ptr<CoreDataSource> m_dataSource;
    std::mutex m_mutex;
    std::unique_ptr<ExtendedManagedContainer> m_container; ///< empty until first needed
    ContainerSource m_containerSource;                     ///< what m_container was made from
    PolynomialCache m_polynomials;
};

} // namespace Core
