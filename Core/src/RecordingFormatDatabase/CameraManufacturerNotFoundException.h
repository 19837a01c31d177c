#pragma once

#include <string>

#include "Exception/Exception.h"

namespace RecordingFormatDatabase {

/// The recording format table does not know the camera maker.
class CameraManufacturerNotFoundException : public Exception {
public:
    explicit CameraManufacturerNotFoundException(std::string cameraManufacturer);
};

} // namespace RecordingFormatDatabase
