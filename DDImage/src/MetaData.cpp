#include "DDImage/MetaData.h"

namespace DD {
namespace Image {
namespace MetaData {

const Property* Bundle::getData(const char* key) const {
    const const_iterator place = find(key);
    return place == end() ? nullptr : &place->second;
}

std::string Bundle::getString(const char* key) const {
    const std::string* text = std::get_if<std::string>(getData(key));
    return text ? *text : std::string();
}

double Bundle::getDouble(const char* key) const {
    const Property* value = getData(key);
    if (const double* number = std::get_if<double>(value)) return *number;
    const std::int64_t* integer = std::get_if<std::int64_t>(value);
    return integer ? static_cast<double>(*integer) : 0;
}

} // namespace MetaData
} // namespace Image
} // namespace DD
