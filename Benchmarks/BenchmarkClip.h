#pragma once

#include <string>

/// A correction file for benchmark clips, of any length.
class BenchmarkClip {
public:
    /// Writes a version 3 file for clip A001C001 of width × height px, frame by frame. Throws std::runtime_error.
    static void writeCorrectionFile(const std::string& path, int width, int height, unsigned int frames);
};
