#pragma once

#include <memory>

#include "Core/Core.h"
#include "Core/FramePreparation.h"

namespace Core {

/// Does the facade's work; its operations throw where the facade's answer false.
///
/// Threads: after the locks of the preparation, and never together with them, `rendererAccessLock`, one per process,
/// guards the renderers. It is taken twice per operation, so that one caller's preparation can come between another's
/// preparation and rendering; what a caller renders with are therefore its own parameter blocks, written again before
/// it renders.
class Core::CorePrivate {
public:
    explicit CorePrivate(std::unique_ptr<CoreDataSource> dataSource);
    ~CorePrivate();

    void frameSize(unsigned int& width, unsigned int& height);
    void render(const float* input, float* output, unsigned long size);
    RecordingFormatDatabase::RecordingFormat recordingFormat();

private:
    FrameParameters prepareRendererIfNeeded();

    FramePreparation m_preparation;
};

} // namespace Core
