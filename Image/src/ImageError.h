#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Image {

/// Why an image could not be read or written. what() is one line, "PATH: what is wrong; what to do", fit to be shown.
class ImageError : public std::runtime_error {
public:
    ImageError(const std::string& path, const std::string& problem) : std::runtime_error(path + ": " + problem) {}
};

/// A valid picture of a kind that is not read (deep pixels, volumes).
class UnsupportedImage : public ImageError {
public:
    using ImageError::ImageError;
};

/// A library's own text in one line and without its full stop, to stand within a message.
inline std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && (text.back() == ' ' || text.back() == '.')) text.pop_back();
    return text.empty() ? "unknown cause" : text;
}

} // namespace Image
