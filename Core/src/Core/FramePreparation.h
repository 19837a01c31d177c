#pragma once

#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

#include "Core/CoreDataSource.h"
#include "Core/ExtendedManagedContainer.h"
#include "CorrectionData/Content.h"
#include "CorrectionFile/Finder/LevelOfDepth.h"
#include "Renderer/DistortionParameter.h"
#include "Renderer/ShadingParameter.h"

namespace Core {

/// How far around a clip to search for its correction file.
constexpr CorrectionFile::LevelOfDepth correctionFileSearchDepth{1, 5, 2};

/// The user's correction file, for a clip that is known by its file name.
struct SelectedCorrectionFile {
    std::string clipFileName;
    std::string correctionFilePath;
};

/// The record that the frame carries.
struct FrameMetadata {
    std::string json;
};

/// The clip around which to search for the correction file.
struct ClipFile {
    std::string path;
};

inline bool operator==(const SelectedCorrectionFile& a, const SelectedCorrectionFile& b) {
    return a.clipFileName == b.clipFileName && a.correctionFilePath == b.correctionFilePath;
}
inline bool operator==(const FrameMetadata& a, const FrameMetadata& b) { return a.json == b.json; }
inline bool operator==(const ClipFile& a, const ClipFile& b) { return a.path == b.path; }

/// Where a container's data come from, and the texts that identify it.
using ContainerSource = std::variant<ClipFile, SelectedCorrectionFile, FrameMetadata>;

/// How a frame's record is found.
enum class RecordKey {
    FrameNumber,
    Timecode,
    OwnRecord, ///< the frame carries it
};

/// A frame to correct, with everything that its correction is computed from.
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

/// Works out from a data source's answers how a frame is corrected, up to the renderers' parameters; needs no OpenCL
/// device. Operations throw what the facade reports.
///
/// Each operation asks the data source first, each question at most once and without a lock, and works on that set of
/// answers whatever the host says meanwhile. A data source may therefore call its facade back.
/// Threads: any. Two locks, never held together: this object's, for its current container, and the container manager's,
/// one per process, for everything that may reach correction files; frames that carry their record need no lock.
class FramePreparation {
public:
    explicit FramePreparation(std::unique_ptr<CoreDataSource> dataSource);
    ~FramePreparation();
    FramePreparation(const FramePreparation&) = delete;
    FramePreparation& operator=(const FramePreparation&) = delete;

    /// None when no correction is wanted. Throws when data are missing, or do not fit the frame's aspect ratio.
    std::optional<FrameToCorrect> retrieveFrameToCorrect();

    /// Fits the polynomials. Throws when that is not possible.
    FrameParameters parameters(const FrameToCorrect& frame) const;

    /// The recording format that the correction data imply; the user's own choice is not consulted.
    RecordingFormatDatabase::RecordingFormat recordingFormat();

protected:
    /// What the data source says about a frame besides clip and correction file.
    struct FrameAnswers {
        std::optional<RecordingFormatDatabase::RecordingFormat> recordingFormat; ///< the user's
        std::optional<FrameData> frameData;
        std::exception_ptr failureOfFrameData; ///< what the question threw
    };

    /// The current container if it was made from an equal source, else a new one that becomes the current one.
    std::shared_ptr<ExtendedManagedContainer> extendedManagedContainer(const ContainerSource& source);
    /// The user's recording format, else the container's. Throws unless it is usable.
    static void retrieveRecordingFormat(const std::shared_ptr<ExtendedManagedContainer>& extendedContainer,
                                        const FrameAnswers& answers, FrameToCorrect& frame);
    /// Throws unless the frame is known and has a size.
    static FrameData retrieveFrameData(const FrameAnswers& answers);
    /// The frame's record by timecode or number; `frame` has its source and its frame data.
    static void retrieveCorrectionFrameData(ExtendedManagedContainer& container, FrameToCorrect& frame);

private:
    FrameAnswers frameAnswers() const;

    const std::unique_ptr<CoreDataSource> m_dataSource;
    std::mutex m_mutex;
    std::shared_ptr<ExtendedManagedContainer> m_container; ///< empty until first needed
    ContainerSource m_containerSource;                     ///< what m_container was made from
};

} // namespace Core
