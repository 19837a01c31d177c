#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Check/Findings.h"
#include "CorrectionData/Content.h"
#include "CorrectionFile/Parser/LineStream.h"

namespace Tools {

/// Finds what is wrong in a correction file's header.
class HeaderCheck {
public:
    /// Both must outlive this. Every finding is reported when it returns.
    HeaderCheck(const std::string& text, Findings& findings);

    /// What the header does give, with harmless values for what is missing or broken.
    const CorrectionData::Header& header() const { return m_header; }

    /// mm; 0: the recording format is unknown.
    float imageRadius() const { return m_imageRadius; }

private:
    struct Entry {
        std::string_view value;
        std::size_t lineNumber = 0;
    };
    using Entries = std::map<std::string_view, Entry>;

    std::string similarLineHint(std::string_view wanted) const;
    Entries readEntries();
    void addEntry(Entries& entries, std::string_view key, std::string_view value,
                  const CorrectionFile::LineStream& stream);
    void checkMandatoryEntries(const Entries& entries);
    void readHeader(const Entries& entries);
    template <typename Number>
    void checkNumber(const Entries& entries, std::string_view key, Number converted);
    void checkHeaderValues(const Entries& entries);

    const std::string& m_text;
    Findings& m_findings;
    std::vector<std::unique_ptr<std::string>> m_copies; ///< of values that no view of the text can be
    bool m_hasHeaderStart = false;
    bool m_hasHeaderEnd = false;
    std::size_t m_headerStartLine = 0;
    CorrectionData::Header m_header;
    float m_imageRadius = 0.0f;
};

} // namespace Tools
