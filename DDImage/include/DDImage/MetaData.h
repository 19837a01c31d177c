#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace DD {
namespace Image {
namespace MetaData {

/// A text, an integer, a number, or a list of integers or numbers.
typedef std::variant<std::string, std::int64_t, double, std::vector<std::int64_t>, std::vector<double>> Property;

/// The metadata of one frame: typed values by key ("input/timecode").
class Bundle {
public:
    typedef std::map<std::string, Property> Map;
    typedef Map::iterator iterator;
    typedef Map::const_iterator const_iterator;

    std::size_t size() const { return m_values.size(); }
    iterator begin() { return m_values.begin(); }
    iterator end() { return m_values.end(); }
    const_iterator begin() const { return m_values.begin(); }
    const_iterator end() const { return m_values.end(); }
    /// end() if the key is absent.
    iterator find(const char* key) { return m_values.find(key); }
    iterator find(const std::string& key) { return m_values.find(key); }
    const_iterator find(const char* key) const { return m_values.find(key); }
    const_iterator find(const std::string& key) const { return m_values.find(key); }

    /// Null if the key is absent.
    const Property* getData(const char* key) const;
    /// The text; empty if the key is absent or holds no text. Nothing is converted.
    std::string getString(const char* key) const;
    /// The number, also of an integer; 0 if the key is absent or holds a text or a list.
    double getDouble(const char* key) const;

    void setData(const std::string& key, Property value) { m_values[key] = std::move(value); }
    void erase(const char* key) { m_values.erase(key); }

    bool operator==(const Bundle& other) const { return m_values == other.m_values; }
    bool operator!=(const Bundle& other) const { return m_values != other.m_values; }

private:
    Map m_values;
};

} // namespace MetaData
} // namespace Image
} // namespace DD
