#include "RecordingFormatDatabase/RecordingFormatDatabase.h"

namespace RecordingFormatDatabase {

RecordingFormatDatabase::~RecordingFormatDatabase() = default;

} // namespace RecordingFormatDatabase
