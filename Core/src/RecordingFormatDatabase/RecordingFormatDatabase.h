#pragma once

#include <map>
#include <string>
#include <vector>

#include "Exception/Exception.h"
#include "RecordingFormatDatabase/RecordingFormat.h"

namespace RecordingFormatDatabase {

/// The recording format table does not contain the camera manufacturer.
class CameraManufacturerNotFoundException : public Exception {
public:
    explicit CameraManufacturerNotFoundException(std::string cameraManufacturer);
};

/// The recording format table contains the camera manufacturer, but no such model.
class CameraManufacturerModelMismatchException : public Exception {
public:
    CameraManufacturerModelMismatchException(std::string cameraManufacturer, std::string cameraModel);
};

/// Lists the known camera manufacturers, the models of each, and the recording formats of a model.
///
/// Manufacturers and models match case-insensitively. Every operation replaces its output, and leaves it untouched if
/// it throws. Any number of threads at once.
class RecordingFormatDatabase {
public:
    virtual ~RecordingFormatDatabase() = default;

    /// All manufacturers in case-insensitive alphabetical order.
    virtual void cameraManufacturers(std::vector<std::string>& cameraManufacturers) const = 0;

    /// A manufacturer's models in case-insensitive alphabetical order. Throws CameraManufacturerNotFoundException.
    virtual void cameraModels(const std::string& cameraManufacturer, std::vector<std::string>& cameraModels) const = 0;

    /// A model's formats by format name, in bytewise order of the names, which are case-sensitive. Throws
    /// CameraManufacturerNotFoundException or, for a known manufacturer without such a model,
    /// CameraManufacturerModelMismatchException.
    virtual void recordingFormats(const std::string& cameraManufacturer, const std::string& cameraModel,
                                  std::map<std::string, RecordingFormat>& recordingFormats) const = 0;
};

} // namespace RecordingFormatDatabase
