#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "MetadataDatabase/MetadataDatabase.h"
#include "Text/iless.h"

namespace MetadataDatabase {

/// The built-in table, MetadataKeys.csv: rows of kind, camera manufacturer, container format and host metadata key.
extern const char* const metadataKeysCsvStringArray[15];

/// Metadata keys parsed from text rows of four fields separated by semicolons.
///
/// The built-in table is not symmetric: RED has a timecode key for EXR but no clip name key, Sony is listed for MOV
/// only.
class CsvStringBasedMetadataDatabase : public MetadataDatabase {
public:
    using iless = Text::iless;

    /// The database of the built-in table; parsed on the first call, then kept until the process ends.
    static const MetadataDatabase& sharedInstance();

    /// Parses `count` rows; a row without exactly four fields is a programming error. A later row overwrites one of the
    /// same first three fields.
    CsvStringBasedMetadataDatabase(const char* const* rows, std::size_t count);
    ~CsvStringBasedMetadataDatabase() override;

    void keyForKind(MetadataKind kind, const std::string& cameraManufacturer, const std::string& containerFormat,
                    std::string& key) const override;

private:
    using KeyByContainerFormat = std::map<std::string, std::string, iless>;
    using KeysByCameraManufacturer = std::map<std::string, KeyByContainerFormat, iless>;

    std::map<std::string, KeysByCameraManufacturer> m_keys; ///< by kind name, manufacturer, container format
};

} // namespace MetadataDatabase
