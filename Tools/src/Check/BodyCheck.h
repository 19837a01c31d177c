#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Check/Findings.h"
#include "Check/HeaderCheck.h"
#include "CorrectionData/Content.h"
#include "CorrectionFile/Parser/LineStream.h"
#include "Lens/FitProblems.h"

namespace Tools {

/// Finds what is wrong in a correction file's version and frames.
class BodyCheck {
public:
    /// All arguments must outlive this. Every finding is reported when it returns, and `summary` holds the version and
    /// the frames.
    BodyCheck(const std::string& text, const HeaderCheck& header, Findings& findings, CheckSummary& summary);

private:
    struct FrameEntry {
        static constexpr std::uint32_t noTimecode = std::numeric_limits<std::uint32_t>::max();

        std::uint32_t frameNumber;
        std::uint32_t timecode; ///< in frames since 00:00:00:00
        std::uint32_t lineNumber;
    };

    // A warning that holds for many frames.
    struct Repeated {
        std::size_t lineNumber = 0;
        std::string message; ///< the first one
        std::int32_t firstFrame = 0;
        std::size_t count = 0;
    };

    bool explainBodyStart(const std::string& reason, CorrectionFile::LineStream& stream);
    void checkFrameLine(std::string_view line, bool isVersion3, std::size_t lineNumber);
    std::uint32_t frames(const std::string& timecode) const;
    void checkTimecode(const CorrectionData::Frame& frame, std::size_t lineNumber);
    void checkFit(const CorrectionData::Frame& frame, std::size_t lineNumber);
    void repeat(const std::string& kind, std::int32_t frameNumber, std::size_t lineNumber, const std::string& message);
    void reportRepeated();
    void checkFrames();
    void removeDuplicates();
    void checkGaps();
    void checkTimecodeOrder();

    const std::string& m_text;
    const CorrectionData::Header& m_header;
    const float m_imageRadius; ///< mm; 0: unknown
    Findings& m_findings;
    CheckSummary& m_summary;
    CorrectionData::Frame m_lastFrame;
    std::vector<FitProblem> m_lastProblems;
    std::map<std::string, Repeated> m_repeated;
    std::vector<FrameEntry> m_entries;
};

} // namespace Tools
