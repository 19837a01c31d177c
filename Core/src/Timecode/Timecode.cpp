#include "Timecode/Timecode.h"

#include <cmath>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>

#include "Exception/Assert.h"
#include "Exception/DetailLines.h"
#include "Text/StrictConversion.h"
#include "Text/ToString.h"

namespace Timecode {

namespace {

constexpr std::uint32_t secondsPerMinute = 60;
constexpr std::uint32_t secondsPerHour = 3600;

InvalidTimecodeException invalidTimecodeExceptionDueToInvalidFormat(const char* text, float framesPerSecond) {
    return InvalidTimecodeException("Timecode object could not be constructed due to invalid format.", text,
                                    framesPerSecond);
}

InvalidTimecodeException invalidTimecodeExceptionDueToIncomparableTimecodes(const Timecode& lhs, const Timecode& rhs) {
    return InvalidTimecodeException("Timecode comparison could not be performed.", lhs.string(true), rhs.string(true));
}

// Spelled so on purpose: the name is kept.
InvalidTimecodeException invalidTimecodeExceptionDueToInvalidTimecodesForSubstraction(const Timecode& lhs,
                                                                                      const Timecode& rhs) {
    return InvalidTimecodeException("Timecode subtraction could not be performed.", lhs.string(true), rhs.string(true));
}

bool parsePieces(std::string_view text, std::uint32_t& hours, std::uint32_t& minutes, std::uint32_t& seconds,
                 std::uint32_t& frames) {
    std::uint32_t* const counters[] = {&hours, &minutes, &seconds, &frames};
    constexpr std::size_t lastPiece = 3;
    for (std::size_t piece = 0; piece <= lastPiece; ++piece) {
        const std::size_t end = text.find(':');
        const bool isLast = end == std::string_view::npos;
        if (isLast != (piece == lastPiece) || !Text::convertStrictly(text.substr(0, end), *counters[piece]))
            return false;
        if (!isLast) text.remove_prefix(end + 1);
    }
    return true;
}

// The frames counted to one second: the rate rounded up. False if the rate is not positive, not a number or no count
// of 32 bits, so that the conversion is always defined.
bool countedFramesPerSecond(float framesPerSecond, std::uint32_t& count) {
    const float roundedUp = std::ceil(framesPerSecond);
    constexpr float countLimit = 4294967296.0f;
    if (!(roundedUp > 0.0f && roundedUp < countLimit)) return false;
    count = static_cast<std::uint32_t>(roundedUp);
    return true;
}

std::uint32_t wholeSeconds(const Timecode& timecode) {
    return timecode.hours * secondsPerHour + timecode.minutes * secondsPerMinute + timecode.seconds;
}

} // namespace

Timecode::Timecode(const char* _timecode, float _framesPerSecond) : framesPerSecond(_framesPerSecond) {
    ORVEX_ASSERT(_timecode);
    const bool isValid = parsePieces(_timecode, hours, minutes, seconds, frames) && minutes < secondsPerMinute &&
                         seconds < 60 && (framesPerSecond == 0.0f || framesPerSecond > static_cast<float>(frames));
    if (!isValid) throw invalidTimecodeExceptionDueToInvalidFormat(_timecode, framesPerSecond);
}

std::string Timecode::string(bool withFramesPerSecond) const {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << std::setfill('0') << std::setw(2) << hours << ':' << std::setw(2) << minutes << ':' << std::setw(2)
           << seconds << ':' << std::setw(2) << frames;
    if (withFramesPerSecond) {
        stream << '@';
        float wholePart = 0.0f;
        if (std::modf(framesPerSecond, &wholePart) != 0.0f) stream << std::fixed << std::setprecision(2);
        stream << framesPerSecond;
    }
    return stream.str();
}

Timecode& Timecode::operator+=(const unsigned int& frameCount) {
    std::uint32_t n = 0;
    const bool isCountable =
        countedFramesPerSecond(framesPerSecond, n) && n <= std::numeric_limits<std::uint32_t>::max() / secondsPerHour;
    if (!isCountable) throw invalidTimecodeExceptionDueToInvalidFormat(string(false).c_str(), framesPerSecond);

    const std::uint32_t total = frameCount + frames + wholeSeconds(*this) * n;
    hours = total / (n * secondsPerHour);
    std::uint32_t rest = total % (n * secondsPerHour);
    minutes = rest / (n * secondsPerMinute);
    rest %= n * secondsPerMinute;
    seconds = rest / n;
    frames = rest % n;
    return *this;
}

void Timecode::checkIfTimecodesAreComparableAndThrowIfNeeded(const Timecode& lhs, const Timecode& rhs) {
    if (lhs.framesPerSecond == rhs.framesPerSecond) return;
    if ((lhs.framesPerSecond > 0.0f) != (rhs.framesPerSecond > 0.0f)) return;
    throw invalidTimecodeExceptionDueToIncomparableTimecodes(lhs, rhs);
}

Timecode operator+(const Timecode& timecode, const unsigned int& frameCount) {
    Timecode result = timecode;
    result += frameCount;
    return result;
}

unsigned int operator-(const Timecode& lhs, const Timecode& rhs) {
    const bool ratesFit = lhs.framesPerSecond == rhs.framesPerSecond || lhs.framesPerSecond == 0.0f;
    std::uint32_t n = 0;
    if (!ratesFit || !countedFramesPerSecond(rhs.framesPerSecond, n)) {
        throw invalidTimecodeExceptionDueToInvalidTimecodesForSubstraction(lhs, rhs);
    }
    const std::uint32_t lhsCount = wholeSeconds(lhs) * n + lhs.frames;
    const std::uint32_t rhsCount = wholeSeconds(rhs) * n + rhs.frames;
    if (lhsCount < rhsCount) throw invalidTimecodeExceptionDueToInvalidTimecodesForSubstraction(lhs, rhs);
    return lhsCount - rhsCount;
}

bool operator==(const Timecode& lhs, const Timecode& rhs) {
    Timecode::checkIfTimecodesAreComparableAndThrowIfNeeded(lhs, rhs);
    return lhs.hours == rhs.hours && lhs.minutes == rhs.minutes && lhs.seconds == rhs.seconds &&
           lhs.frames == rhs.frames;
}

bool operator<(const Timecode& lhs, const Timecode& rhs) {
    Timecode::checkIfTimecodesAreComparableAndThrowIfNeeded(lhs, rhs);
    const std::uint32_t lhsSeconds = wholeSeconds(lhs);
    const std::uint32_t rhsSeconds = wholeSeconds(rhs);
    return lhsSeconds != rhsSeconds ? lhsSeconds < rhsSeconds : lhs.frames < rhs.frames;
}

InvalidTimecodeException::InvalidTimecodeException(const std::string& briefDescription, const std::string& timecode,
                                                   float framesPerSecond)
    : Exception(briefDescription, DetailLines()
                                      .text("Timecode String", timecode)
                                      .text("Frames per Second", Text::toString(framesPerSecond))
                                      .string()) {}

InvalidTimecodeException::InvalidTimecodeException(const std::string& briefDescription, const std::string& lhsTimecode,
                                                   const std::string& rhsTimecode)
    : Exception(briefDescription,
                DetailLines().text("Lhs Timecode", lhsTimecode).text("Rhs Timecode", rhsTimecode).string()) {}

} // namespace Timecode
