#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace Tools {

/// A document as every command writes it: indented by two spaces, without a line feed at its end. Names of files and
/// channels need not be valid UTF-8: other bytes become replacement characters.
std::string jsonText(const nlohmann::ordered_json& json);

/// The same in one line.
std::string jsonLine(const nlohmann::ordered_json& json);

} // namespace Tools
