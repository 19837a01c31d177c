#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Core/CoreDataSource.h"
#include "Core/ExtendedManagedContainer.h"
#include "CorrectionData/Content.h"
#include "CorrectionFile/Finder/LevelOfDepth.h"
#include "Renderer/DistortionParameter.h"
#include "Renderer/ShadingParameter.h"

namespace Core {

/// How far around a clip its correction file is searched.
constexpr CorrectionFile::LevelOfDepth correctionFileSearchDepth{1, 5, 2};

/// Where a container's data come from, and by which texts it was chosen.
struct ContainerSource {
    enum class Kind {
        None,
        CorrectionFile, ///< first: the clip's file name; second: the correction file's path
        FrameMetadata,  ///< first: the JSON text that the frame carries
        ClipFile,       ///< first: the clip's path, around which the correction file is searched
    };

    Kind kind = Kind::None;
    std::string first;
    std::string second;
};

/// By what a frame's record is found.
enum class RecordKey {
    FrameNumber,
    Timecode,
    OwnRecord, ///< the frame carries it
};

/// A frame whose correction is wanted, with all that the correction is worked out from.
struct FrameToCorrect {
    std::optional<ShadingCorrectionParameter> wantedShading;
    std::optional<DistortionCorrectionParameter> wantedDistortion;
    ContainerSource source;
    RecordingFormatDatabase::RecordingFormat recordingFormat; ///< usable
    RecordingFormatOrigin recordingFormatOrigin;
    FrameData frameData;
    RecordKey key = RecordKey::FrameNumber;
    std::string keyText; ///< the timecode or the number that was looked up
    CorrectionData::Frame record;
};

/// The parameter blocks of the corrections that are wanted.
struct FrameParameters {
    std::optional<Renderer::ShadingParameter> shading;
    std::optional<Renderer::DistortionParameter> distortion;
};

/// Works out from a data source's answers how a frame is corrected, up to what the renderers are told; needs no OpenCL
/// device. Operations throw what the facade reports.
///
/// Threads: any. Two locks, taken in this order: this object's, for its container and its questions to the data source,
/// and the container manager's, one per process, for everything that may reach correction files.
class FramePreparation {
public:
    explicit FramePreparation(std::unique_ptr<CoreDataSource> dataSource);
    ~FramePreparation();
    FramePreparation(const FramePreparation&) = delete;
    FramePreparation& operator=(const FramePreparation&) = delete;

    /// None when no correction is wanted. Throws when data are missing, or do not fit the frame's aspect ratio.
    std::optional<FrameToCorrect> retrieveFrameToCorrect();

    /// Fits the polynomials. Throws when that is not possible.
    FrameParameters parameters(const FrameToCorrect& frame);

    /// The recording format that the correction data imply; the user's own choice is not consulted.
    RecordingFormatDatabase::RecordingFormat recordingFormat();

private:
    void retrieveRecordingFormat(FrameToCorrect& frame);
    FrameData retrieveFrameData() const;
    void retrieveCorrectionFrameData(FrameToCorrect& frame);

    ExtendedManagedContainer* extendedManagedContainer();
    ContainerSource containerSource() const;

    Renderer::ShadingParameter shadingParameter(const ShadingCorrectionParameter& wanted, const FrameToCorrect& frame);
    Renderer::DistortionParameter distortionParameter(const DistortionCorrectionParameter& wanted,
                                                      const FrameToCorrect& frame);

    const std::unique_ptr<CoreDataSource> m_dataSource;
    std::mutex m_mutex;
    std::unique_ptr<ExtendedManagedContainer> m_container; ///< empty until first needed
    ContainerSource m_containerSource;                     ///< what m_container was made from
};

} // namespace Core
