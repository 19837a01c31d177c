#include "RecordingFormatDatabase/RecordingFormatDatabase.h"

#include "Exception/DetailLines.h"

namespace RecordingFormatDatabase {

CameraManufacturerModelMismatchException::CameraManufacturerModelMismatchException(std::string cameraManufacturer,
                                                                                   std::string cameraModel)
    : Exception(
          "Camera manufacturer and model could not be found in the recording format database.",
          DetailLines().text("Camera Manufacturer", cameraManufacturer).text("Camera Model", cameraModel).string()) {}

CameraManufacturerNotFoundException::CameraManufacturerNotFoundException(std::string cameraManufacturer)
    : Exception("Camera manufacturer could not be found in the recording format database.",
                DetailLines().text("Camera Manufacturer", cameraManufacturer).string()) {}

} // namespace RecordingFormatDatabase
