#include "Report/Failure.h"

#include "Report/PrintableText.h"

namespace Tools {

Failure::Failure(Kind kind, const std::string& brief, const std::string& details)
    : std::runtime_error(brief), m_kind(kind), m_details(details) {}

Failure::~Failure() = default;

std::string Failure::text() const { return causeFirst(withoutLastLineFeeds(m_details.empty() ? what() : m_details)); }

void refuse(const std::string& what) { throw Failure(Failure::Kind::WrongUse, what); }

std::string causeFirst(const std::string& text) {
    for (const std::string sentence :
         {"Header of the metadata is not available. ", "Metadata for the frame is not available. "})
        if (text.starts_with(sentence)) return text.substr(sentence.size());
    return text;
}

} // namespace Tools
