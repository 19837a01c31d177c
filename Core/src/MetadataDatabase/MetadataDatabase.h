#pragma once

#include <string>

#include "Exception/Exception.h"

namespace MetadataDatabase {

/// No host metadata key is known for the kind, camera manufacturer and container format.
class CameraManufacturerContainerFormatMismatchException : public Exception {
public:
    CameraManufacturerContainerFormatMismatchException(std::string kind, std::string cameraManufacturer,
                                                       std::string containerFormat);
};

/// What a host metadata key holds. The enumerators' names are the first column of the table.
enum class MetadataKind { ClipFileName = 0, Timecode = 1 };

/// Looks up the host metadata key that holds a kind of information, by camera manufacturer and container format.
class MetadataDatabase {
public:
    virtual ~MetadataDatabase() = default;

    /// Sets `key`; manufacturer and container format match case-insensitively. Any thread. Example: Timecode, "red",
    /// "r3d" gives "r3d/start_absolute_timecode". Throws CameraManufacturerContainerFormatMismatchException, leaving
    /// `key` untouched.
    virtual void keyForKind(MetadataKind kind, const std::string& cameraManufacturer,
                            const std::string& containerFormat, std::string& key) const = 0;
};

} // namespace MetadataDatabase
