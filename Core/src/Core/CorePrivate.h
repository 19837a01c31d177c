#pragma once

#include <functional>
#include <memory>

#include "Core/Core.h"
#include "Core/FramePreparation.h"

namespace Core {

/// Does the facade's work: the preparation of frames, and what needs the renderers. Its operations throw where the
/// facade's answer false.
///
/// Threads: `rendererAccessLock`, one per process, guards the renderers; it is taken after the locks of the
/// preparation, and never together with them. It is taken twice per operation, to make the renderers and to use them; a
/// caller writes its own parameter blocks into them right before it renders.
class Core::CorePrivate : private FramePreparation {
public:
    explicit CorePrivate(std::unique_ptr<CoreDataSource> dataSource);
    ~CorePrivate();

    void frameSize(unsigned int& width, unsigned int& height);
    void render(const float* input, float* output, unsigned long size, const std::function<bool()>& isAborted);
    using FramePreparation::recordingFormat;

private:
    using FramePreparation::extendedManagedContainer;
    using FramePreparation::retrieveCorrectionFrameData;
    using FramePreparation::retrieveFrameData;
    using FramePreparation::retrieveRecordingFormat;

    /// The parameter blocks of the active corrections; with one, the renderers exist afterwards.
    FrameParameters prepareRendererIfNeeded();
};

} // namespace Core
