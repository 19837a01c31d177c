#include "Logger/LogEntry.h"

namespace Core {

LogEntry::LogEntry(const std::string& filePath) : m_file(System::RegularFile::toAppend(filePath)) {}

void LogEntry::write(const std::string& text) {
    if (m_file.isOpen()) m_file.append(text + '\n');
}

} // namespace Core
