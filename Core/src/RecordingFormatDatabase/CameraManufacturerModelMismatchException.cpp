#include "RecordingFormatDatabase/CameraManufacturerModelMismatchException.h"

#include "Exception/DetailLines.h"

namespace RecordingFormatDatabase {

CameraManufacturerModelMismatchException::CameraManufacturerModelMismatchException(std::string cameraManufacturer,
                                                                                   std::string cameraModel)
    : Exception(
          "Camera manufacturer and model could not be found in the recording format database.",
          DetailLines().text("Camera Manufacturer", cameraManufacturer).text("Camera Model", cameraModel).string()) {}

} // namespace RecordingFormatDatabase
