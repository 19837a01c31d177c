#pragma once

#include <map>
#include <string>
#include <vector>

#include "Exception/Exception.h"
#include "RecordingFormatDatabase/RecordingFormat.h"

namespace RecordingFormatDatabase {

/// The recording format table does not know the camera maker.
class CameraManufacturerNotFoundException : public Exception {
public:
    explicit CameraManufacturerNotFoundException(std::string cameraManufacturer);
};

/// The recording format table knows the camera maker but no such model of it.
class CameraManufacturerModelMismatchException : public Exception {
public:
    CameraManufacturerModelMismatchException(std::string cameraManufacturer, std::string cameraModel);
};

/// Answers which camera makers are known, which models a maker has, and which recording formats a model offers.
///
/// Makers and models are matched without regard to letter case. Every operation replaces the content of its output and
/// leaves it untouched when it throws. Any thread, any number at once.
class RecordingFormatDatabase {
public:
    virtual ~RecordingFormatDatabase() = default;

    /// All makers in case-insensitive alphabetical order.
    virtual void cameraManufacturers(std::vector<std::string>& cameraManufacturers) const = 0;

    /// A maker's models in case-insensitive alphabetical order.
    /// Throws CameraManufacturerNotFoundException.
    virtual void cameraModels(const std::string& cameraManufacturer, std::vector<std::string>& cameraModels) const = 0;

    /// A model's formats by format name, in bytewise order of the names, which are case-sensitive.
    /// Throws CameraManufacturerNotFoundException or, for a known maker without such a model,
    /// CameraManufacturerModelMismatchException.
    virtual void recordingFormats(const std::string& cameraManufacturer, const std::string& cameraModel,
                                  std::map<std::string, RecordingFormat>& recordingFormats) const = 0;
};

} // namespace RecordingFormatDatabase
