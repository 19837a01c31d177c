#include "MetadataDatabase/CsvStringBasedMetadataDatabase.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <iterator>
#include <mutex>
#include <vector>

#include "Exception/Assert.h"

namespace MetadataDatabase {

const char* const metadataKeysCsvStringArray[15] = {
#include "MetadataDatabase/MetadataKeys.csv.inc"
};

namespace {

constexpr const char* kindNames[] = {"ClipFileName", "Timecode"}; // in the order of MetadataKind

const MetadataDatabase* makeSharedInstance() {
    try {
        return new CsvStringBasedMetadataDatabase(metadataKeysCsvStringArray, std::size(metadataKeysCsvStringArray));
    } catch (...) {
        ORVEX_ASSERT(false);
        return nullptr;
    }
}

} // namespace

const MetadataDatabase& CsvStringBasedMetadataDatabase::sharedInstance() {
    static std::once_flag createSharedInstanceOnceFlag;
    // Never destroyed: a host thread may still ask while static objects are torn down.
    static const MetadataDatabase* instance = nullptr;
    std::call_once(createSharedInstanceOnceFlag, [] { instance = makeSharedInstance(); });
    return *instance;
}

CsvStringBasedMetadataDatabase::CsvStringBasedMetadataDatabase(const char* const* rows, std::size_t count) {
    std::vector<std::string> parts;
    for (std::size_t row = 0; row < count; ++row) {
        boost::split(parts, std::string(rows[row]), boost::is_any_of(";"));
        ORVEX_ASSERT(parts.size() == 4);
        m_keys[parts[0]][parts[1]][parts[2]] = parts[3];
    }
}

CsvStringBasedMetadataDatabase::~CsvStringBasedMetadataDatabase() = default;

void CsvStringBasedMetadataDatabase::keyForKind(MetadataKind kind, const std::string& cameraManufacturer,
                                                const std::string& containerFormat, std::string& key) const {
    const auto index = static_cast<std::size_t>(kind);
    const std::string kindName = index < std::size(kindNames) ? kindNames[index] : "";
    const auto keys = m_keys.find(kindName);
    const bool kindExists = keys != m_keys.end();
    ORVEX_ASSERT(kindExists);
    const auto manufacturer = keys->second.find(cameraManufacturer);
    if (manufacturer != keys->second.end()) {
        const auto found = manufacturer->second.find(containerFormat);
        if (found != manufacturer->second.end()) {
            key = found->second;
            return;
        }
    }
    throw CameraManufacturerContainerFormatMismatchException(kindName, cameraManufacturer, containerFormat);
}

} // namespace MetadataDatabase
