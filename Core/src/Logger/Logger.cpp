#include "Logger/Logger.h"

#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>

#include "Logger/LogEntry.h"

namespace Core {

Logger::Logger(const std::string& filePath) : m_filePath(filePath) {}

void Logger::log(const std::string& message) const {
    LogEntry(m_filePath).write(entryText(std::chrono::system_clock::now(), message));
}

std::string Logger::entryText(std::chrono::system_clock::time_point time, const std::string& message) {
    using namespace std::chrono;
    const auto wholeSeconds = floor<seconds>(time);
    const auto microsecondPart = duration_cast<microseconds>(time - wholeSeconds).count();
    const std::time_t calendarSeconds = system_clock::to_time_t(wholeSeconds);
    std::tm localTime = {};
#ifdef _WIN32
    localtime_s(&localTime, &calendarSeconds);
#else
    localtime_r(&calendarSeconds, &localTime);
#endif

    std::ostringstream entry;
    entry.imbue(std::locale::classic());
    entry << std::put_time(&localTime, "%Y-%m-%d %H:%M:%S") << '.' << std::setfill('0') << std::setw(6)
          << microsecondPart << ": " << message;
    return entry.str();
}

} // namespace Core
