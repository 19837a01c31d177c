#include "Report/Json.h"

#include <nlohmann/json.hpp>

namespace Tools {

namespace {

std::string text(const nlohmann::ordered_json& json, int indent) {
    return json.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace

std::string jsonText(const nlohmann::ordered_json& json) { return text(json, 2); }

std::string jsonLine(const nlohmann::ordered_json& json) { return text(json, -1); }

} // namespace Tools
