#include "CorrectionData/Parser/JsonParser.h"

// property_tree itself includes the old placeholder header and would say so at every build.
#define BOOST_BIND_GLOBAL_PLACEHOLDERS
#include <boost/property_tree/json_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <cmath>
#include <cstddef>
#include <locale>
#include <new>
#include <sstream>
#include <tuple>
#include <utility>
#include <vector>

#include "Exception/Exception.h"

namespace CorrectionData {

namespace {

using boost::property_tree::ptree;

constexpr std::size_t maximumSize = std::size_t{1} << 20;
constexpr std::size_t maximumDepth = 64;

/// Whether the recursive reader can be trusted with the text: a few kilobytes of brackets would overflow a host
/// thread's stack. Up to the first error in the text, where the reader stops, both agree on what is inside a string.
bool isReadableRecursively(const std::string& json) {
    if (json.size() > maximumSize) return false;
    std::size_t depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (isInString) {
            if (c == '\\') ++i;
            if (c == '"') isInString = false;
        } else if (c == '"') {
            isInString = true;
        } else if (c == '{' || c == '[') {
            if (++depth > maximumDepth) return false;
        } else if ((c == '}' || c == ']') && depth > 0) {
            --depth;
        }
    }
    return true;
}

template <typename Number>
Number number(const ptree& node) {
    // As the tree's own translator reads, but not by the global locale, which may have a decimal comma, and without
    // taking a lack of memory for a text that does not convert.
    std::istringstream stream(node.data());
    stream.imbue(std::locale::classic());
    stream.exceptions(std::ios::badbit);
    Number value{};
    stream >> value;
    if (!stream.eof()) stream >> std::ws;
    if (stream.fail() || stream.peek() != std::istringstream::traits_type::eof()) {
        throw Exception("The value of a number does not convert.");
    }
    return value;
}

std::vector<float> interpolationPoints(const ptree& tree, const char* name) {
    std::vector<float> values;
    const std::string path = std::string("frameData.interpolationPoints.") + name;
    for (const auto& [key, node] : tree.get_child(path)) values.push_back(number<float>(node));
    if (values.size() < 6 || values.size() > 7) throw Exception("An interpolation array has the wrong length.");
    return values;
}

std::pair<Header, Frame> parsed(const std::string& json) {
    ptree tree;
    std::istringstream stream(json);
    boost::property_tree::read_json(stream, tree);

    Header header;
    header.cameraManufacturer = tree.get<std::string>("recordingFormat.camera.manufacturer");
    header.cameraModel = tree.get<std::string>("recordingFormat.camera.model");
    header.clipWidth = number<std::uint32_t>(tree.get_child("recordingFormat.clipResolution.width"));
    header.clipHeight = number<std::uint32_t>(tree.get_child("recordingFormat.clipResolution.height"));
    const float imageRadius = number<float>(tree.get_child("recordingFormat.imageRadius"));
    const float width = static_cast<float>(header.clipWidth);
    const float height = static_cast<float>(header.clipHeight);
    header.sensorWidth = imageRadius / (0.5f * std::sqrt(width * width + height * height)) * width;

    Frame frame;
    frame.heights = interpolationPoints(tree, "heights");
    frame.shading = interpolationPoints(tree, "shading");
    frame.radialDistortion = interpolationPoints(tree, "radialDistortion");
    return {std::move(header), std::move(frame)};
}

} // namespace

void JsonParser::parse(const std::string& json, Header& header, Frame& frame) {
    try {
        if (!isReadableRecursively(json)) throw Exception("The text is too long or nested too deeply.");
        std::tie(header, frame) = parsed(json);
    } catch (const std::bad_alloc&) {
        throw; // says nothing about the text
    } catch (const std::exception&) {
        throw Exception("JSON metadata string has an invalid format.");
    }
}

} // namespace CorrectionData
