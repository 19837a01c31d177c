#include "Exception/Exception.h"

Exception::Exception(const std::string& what) : m_what(what) {}

Exception::Exception(const std::string& what, const std::string& details) : m_what(what), m_details(details) {}

Exception::~Exception() = default;

const char* Exception::what() const noexcept { return m_what.c_str(); }

std::string Exception::detailedDescription() const {
    std::string description = m_what + "\n";
    if (!m_details.empty()) description += m_details + "\n";
    return description;
}

void Exception::setDetails(const std::string& details) { m_details = details; }
