#pragma once

#include <string>

#include "Exception/Exception.h"

namespace MetadataDatabase {

/// No host metadata key is known for the kind, camera maker and container format.
class CameraManufacturerContainerFormatMismatchException : public Exception {
public:
    CameraManufacturerContainerFormatMismatchException(std::string kind, std::string cameraManufacturer,
                                                       std::string containerFormat);
};

} // namespace MetadataDatabase
