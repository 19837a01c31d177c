#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Core/CoreDataSource.h"
#include "Core/ErrorTexts.h"

namespace Core {

/// The single entry of the correction core: asks its data source about the current frame, finds and parses the
/// correction data, and sizes or renders the corrected frame on the most powerful OpenCL device.
///
/// Every operation answers false on failure and keeps the failure's texts for the thread that called it, until that
/// thread's next operation; no other thread's operation touches them. Exceptions of the Exception family never leave
/// the facade; any other (a value in a correction file that is not a number, a file system error, out of memory) passes
/// through to the caller, who has to catch it. Threads: one facade may be used by several threads, and several facades
/// at once. The data source may call back into its facade.
class Core {
public:
    explicit Core(std::unique_ptr<CoreDataSource> dataSource);
    ~Core();
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    /// Size in px of the output frame that holds the whole corrected picture. Untouched on failure and when no
    /// correction is wanted. Fails when shading and distortion are both wanted.
    bool frameSize(unsigned int& width, unsigned int& height);

    /// Renders the current frame. Both buffers hold `size` bytes: width × height × 4 floats (R, G, B, A), row by row
    /// without gaps, in the frame data's size. `input` is null exactly when a map is wanted. With no correction
    /// wanted, succeeds and leaves `output` untouched; after a failure `output` is undefined.
    /// `isAborted`, if set, is called on the calling thread once the renderers are free, right before rendering starts.
    /// When it answers true, nothing is rendered: a success that leaves `output` untouched. It must not call a facade.
    bool render(const float* input, float* output, unsigned long size, const std::function<bool()>& isAborted = {});

    /// The recording format that the correction data imply; the user's own choice is not consulted. An unknown format
    /// is a success with zeros.
    bool recordingFormat(RecordingFormatDatabase::RecordingFormat& recordingFormat);

    /// Copies the brief text of the calling thread's last failure with its terminating zero; false when there is none
    /// or it does not fit.
    bool briefErrorDescription(char* description, unsigned long capacity) const;

    /// Likewise the text that names all values involved, several lines, ending in a line feed.
    bool detailedErrorDescription(char* description, unsigned long capacity) const;

    /// Host metadata key under which a maker's clips of a container format carry the clip's name or timecode. Letter
    /// case is ignored. False, with the buffer untouched, when none is known or it does not fit. Any thread.
    static bool metadataKeyForClipFileName(const char* c_cameraManufacturer, const char* c_containerFormat, char* c_key,
                                           unsigned long keyCapacity);
    static bool metadataKeyForTimecode(const char* c_cameraManufacturer, const char* c_containerFormat, char* c_key,
                                       unsigned long keyCapacity);

private:
    class CorePrivate;
    template <typename Operation>
    bool perform(Operation operation);

    std::unique_ptr<CorePrivate> m_private;
    ErrorTexts m_errors;
};

} // namespace Core
