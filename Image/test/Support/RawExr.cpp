#include "Support/RawExr.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

std::string RawExr::words(const std::vector<int>& values) {
    std::string bytes(values.size() * 4, '\0');
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

std::string RawExr::attribute(const std::string& name, const std::string& type, const std::string& value) {
    return name + '\0' + type + '\0' + words({static_cast<int>(value.size())}) + value;
}

std::string RawExr::bytes() const {
    std::string list;
    int bytesPerPixel = 0;
    for (const Channel& channel : channels) {
        list += channel.name + '\0' + words({channel.type, 0, 1, 1});
        bytesPerPixel += channel.type == 1 ? 2 : 4;
    }
    list += '\0';
    std::string file = words({20000630, static_cast<int>(version)});
    file += attribute("channels", "chlist", list);
    file += attribute("compression", "compression", std::string(1, static_cast<char>(compression)));
    file += attribute("dataWindow", "box2i", words(dataWindow));
    file += attribute("displayWindow", "box2i", words(displayWindow.value_or(dataWindow)));
    file += attribute("lineOrder", "lineOrder", std::string(1, '\0'));
    file += attribute("pixelAspectRatio", "float", words({0x3f800000}));
    file += attribute("screenWindowCenter", "v2f", words({0, 0}));
    file += attribute("screenWindowWidth", "float", words({0x3f800000}));
    file += more;
    file += '\0';
    if (pixels && dataWindow[0] <= dataWindow[2] && dataWindow[1] <= dataWindow[3]) {
        const int width = dataWindow[2] - dataWindow[0] + 1;
        const int height = dataWindow[3] - dataWindow[1] + 1;
        std::string table;
        std::string body;
        const std::size_t start = file.size() + static_cast<std::size_t>(height) * 8;
        for (int y = 0; y < height; ++y) {
            table += words({static_cast<int>(start + body.size()), 0});
            body += words({dataWindow[1] + y, width * bytesPerPixel});
            for (int i = 0; i < width * bytesPerPixel; i += 2) body += std::string("\x00\x3c", 2);
        }
        file += table + body;
    }
    file.resize(static_cast<std::size_t>(static_cast<double>(file.size()) * keptPart));
    return file;
}

void RawExr::write(const std::string& path) const { writeBytes(path, bytes()); }

void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string readBytes(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::string outputOf(const std::string& command) {
    std::FILE* const pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return "cannot run " + command;
    std::string output;
    std::array<char, 4096> buffer;
    for (std::size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), n);
    const int status = ::pclose(pipe);
    if (status != 0) output += "[status " + std::to_string(status) + "]";
    return output;
}
