#include "MetadataDatabase/MetadataDatabase.h"

#include "Exception/DetailLines.h"

namespace MetadataDatabase {

// The text names the recording format database on purpose: it is kept as users know it.
CameraManufacturerContainerFormatMismatchException::CameraManufacturerContainerFormatMismatchException(
    std::string kind, std::string cameraManufacturer, std::string containerFormat)
    : Exception("Camera manufacturer and container format could not be found in the recording format database.",
                DetailLines()
                    .text("Metadata Kind", kind)
                    .text("Camera Manufacturer", cameraManufacturer)
                    .text("Container Format", containerFormat)
                    .string()) {}

} // namespace MetadataDatabase
