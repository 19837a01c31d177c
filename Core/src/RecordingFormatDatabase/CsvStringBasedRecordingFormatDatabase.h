#pragma once

#include <cstddef>

#include "RecordingFormatDatabase/RecordingFormatDatabase.h"
#include "Text/iless.h"

namespace RecordingFormatDatabase {

/// The built-in table, one text row per recording format; RecordingFormats.csv, whose fields README.md explains.
extern const char* const recordingFormatsCsvStringArray[2804];

/// Recording formats parsed from text rows of eight fields separated by semicolons.
class CsvStringBasedRecordingFormatDatabase : public RecordingFormatDatabase {
public:
    /// The database of the built-in table; parsed on the first call, then kept until the process ends.
    static const RecordingFormatDatabase& sharedInstance();

    /// Parses `count` rows. A row without exactly eight fields is a programming error; one with a number that does not
    /// convert as a whole throws boost::bad_lexical_cast. Of rows with the same key the last one counts.
    CsvStringBasedRecordingFormatDatabase(const char* const* rows, std::size_t count);
    ~CsvStringBasedRecordingFormatDatabase() override;

    void cameraManufacturers(std::vector<std::string>& cameraManufacturers) const override;
    void cameraModels(const std::string& cameraManufacturer, std::vector<std::string>& cameraModels) const override;
    void recordingFormats(const std::string& cameraManufacturer, const std::string& cameraModel,
                          std::map<std::string, RecordingFormat>& recordingFormats) const override;

private:
    using iless = Text::iless;
    using Formats = std::map<std::string, RecordingFormat>;
    using Models = std::map<std::string, Formats, iless>;

    const Models& models(const std::string& cameraManufacturer) const;

    std::map<std::string, Models, iless> m_formats; ///< by manufacturer, model and format name
};

} // namespace RecordingFormatDatabase
