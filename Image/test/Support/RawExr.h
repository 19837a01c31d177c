#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// An uncompressed OpenEXR file made byte by byte, so that it can also be wrong in one place. As it stands: a whole
/// file of 32 x 32 pixels, B, G, R of half 1.0.
struct RawExr {
    struct Channel {
        std::string name;
        int type;
    };
    std::vector<int> dataWindow{0, 0, 31, 31};
    /// The data window if absent.
    std::optional<std::vector<int>> displayWindow;
    std::vector<Channel> channels{{"B", 1}, {"G", 1}, {"R", 1}};
    int compression = 0;
    /// Whole attributes, from attribute().
    std::string more;
    std::uint32_t version = 2;
    bool pixels = true;
    /// Of the whole file's bytes.
    double keptPart = 1.0;

    static std::string attribute(const std::string& name, const std::string& type, const std::string& value);
    static std::string words(const std::vector<int>& values);
    std::string bytes() const;
    void write(const std::string& path) const;
};

void writeBytes(const std::string& path, const std::string& bytes);
std::string readBytes(const std::string& path);

/// Runs a shell command; returns what it printed, its exit status at the end if that is not 0.
std::string outputOf(const std::string& command);
