#pragma once

#include <array>
#include <string_view>

namespace CorrectionFile {

/// The keys that a correction file's header must have, in the order in which they are checked.
extern const std::array<std::string_view, 19> mandatoryHeaderKeys;

/// Splits a header line, `key:=value`, into views of it. The value may be empty. Returns false, leaving key and value
/// untouched, unless the separator occurs exactly once.
bool splitHeaderLine(std::string_view line, std::string_view& key, std::string_view& value);

} // namespace CorrectionFile
