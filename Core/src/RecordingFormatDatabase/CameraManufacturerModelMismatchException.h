#pragma once

#include <string>

#include "Exception/Exception.h"

namespace RecordingFormatDatabase {

/// The recording format table knows the camera maker but no such model of it.
class CameraManufacturerModelMismatchException : public Exception {
public:
    CameraManufacturerModelMismatchException(std::string cameraManufacturer, std::string cameraModel);
};

} // namespace RecordingFormatDatabase
