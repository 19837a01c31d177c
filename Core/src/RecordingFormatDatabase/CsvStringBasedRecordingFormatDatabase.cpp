#include "RecordingFormatDatabase/CsvStringBasedRecordingFormatDatabase.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cmath>
#include <iterator>
#include <typeinfo>

#include "Exception/Assert.h"
#include "Text/StrictConversion.h"

namespace RecordingFormatDatabase {

const char* const recordingFormatsCsvStringArray[2804] = {
#include "RecordingFormatDatabase/RecordingFormats.csv.inc"
};

namespace {

template <typename Number>
Number converted(const std::string& text) {
    Number number = 0;
    if (!Text::convertStrictly(text, number)) throw boost::bad_lexical_cast(typeid(std::string), typeid(Number));
    return number;
}

float halfDiagonal(float width, float height) {
    const double halfWidth = static_cast<double>(width) / 2.0;
    const double halfHeight = static_cast<double>(height) / 2.0;
    return static_cast<float>(std::sqrt(halfWidth * halfWidth + halfHeight * halfHeight));
}

template <typename Value, typename Order>
std::vector<std::string> keysOf(const std::map<std::string, Value, Order>& map) {
    std::vector<std::string> keys;
    keys.reserve(map.size());
    for (const auto& [key, ignored] : map) keys.push_back(key);
    return keys;
}

} // namespace

const RecordingFormatDatabase& CsvStringBasedRecordingFormatDatabase::sharedInstance() {
    // Never destroyed: a host thread may still ask while static objects are torn down.
    static const auto* const instance = new CsvStringBasedRecordingFormatDatabase(
        recordingFormatsCsvStringArray, std::size(recordingFormatsCsvStringArray));
    return *instance;
}

CsvStringBasedRecordingFormatDatabase::CsvStringBasedRecordingFormatDatabase(const char* const* rows,
                                                                             std::size_t count) {
    std::vector<std::string> parts;
    for (std::size_t row = 0; row < count; ++row) {
        boost::split(parts, std::string(rows[row]), boost::is_any_of(";"));
        ORVEX_ASSERT(parts.size() == 8);
        RecordingFormat format;
        format.imageAreaWidth = converted<float>(parts[4]);
        format.imageAreaHeight = converted<float>(parts[5]);
        format.clipResolutionWidth = converted<std::uint32_t>(parts[6]);
        format.clipResolutionHeight = converted<std::uint32_t>(parts[7]);
        format.imageRadius = halfDiagonal(format.imageAreaWidth, format.imageAreaHeight);
        m_formats[parts[0]][parts[1]][parts[3]] = format;
    }
}

CsvStringBasedRecordingFormatDatabase::~CsvStringBasedRecordingFormatDatabase() = default;

void CsvStringBasedRecordingFormatDatabase::cameraManufacturers(std::vector<std::string>& cameraManufacturers) const {
    cameraManufacturers = keysOf(m_formats);
}

void CsvStringBasedRecordingFormatDatabase::cameraModels(const std::string& cameraManufacturer,
                                                         std::vector<std::string>& cameraModels) const {
    cameraModels = keysOf(models(cameraManufacturer));
}

void CsvStringBasedRecordingFormatDatabase::recordingFormats(
    const std::string& cameraManufacturer, const std::string& cameraModel,
    std::map<std::string, RecordingFormat>& recordingFormats) const {
    const Models& found = models(cameraManufacturer);
    const auto model = found.find(cameraModel);
    if (model == found.end()) throw CameraManufacturerModelMismatchException(cameraManufacturer, cameraModel);
    // Copied first: an assignment of a map that runs out of memory leaves it half filled.
    Formats copy = model->second;
    recordingFormats.swap(copy);
}

const CsvStringBasedRecordingFormatDatabase::Models& CsvStringBasedRecordingFormatDatabase::models(
    const std::string& cameraManufacturer) const {
    const auto found = m_formats.find(cameraManufacturer);
    if (found == m_formats.end()) throw CameraManufacturerNotFoundException(cameraManufacturer);
    return found->second;
}

} // namespace RecordingFormatDatabase
