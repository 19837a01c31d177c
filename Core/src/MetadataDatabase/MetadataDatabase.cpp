#include "MetadataDatabase/MetadataDatabase.h"

namespace MetadataDatabase {

MetadataDatabase::~MetadataDatabase() = default;

} // namespace MetadataDatabase
