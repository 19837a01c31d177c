#include "RecordingFormatDatabase/CameraManufacturerNotFoundException.h"

#include "Exception/DetailLines.h"

namespace RecordingFormatDatabase {

CameraManufacturerNotFoundException::CameraManufacturerNotFoundException(std::string cameraManufacturer)
    : Exception("Camera manufacturer could not be found in the recording format database.",
                DetailLines().text("Camera Manufacturer", cameraManufacturer).string()) {}

} // namespace RecordingFormatDatabase
