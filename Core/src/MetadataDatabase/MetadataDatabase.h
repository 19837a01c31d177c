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

/// What a host metadata key carries. The enumerators' names are the first column of the table.
enum class MetadataKind { ClipFileName = 0, Timecode = 1 };

/// Answers under which host metadata key clips of a camera maker and container format carry a kind of information.
class MetadataDatabase {
public:
    virtual ~MetadataDatabase() = default;

    /// Assigns the key; maker and container format are matched without regard to letter case. Any thread.
    /// Example: Timecode, "red", "r3d" gives "r3d/start_absolute_timecode".
    /// Throws CameraManufacturerContainerFormatMismatchException, leaving `key` untouched.
    virtual void keyForKind(MetadataKind kind, const std::string& cameraManufacturer,
                            const std::string& containerFormat, std::string& key) const = 0;
};

} // namespace MetadataDatabase
