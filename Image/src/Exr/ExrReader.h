#pragma once

#include "Exr/ExrHeader.h"
#include "Files.h"
#include "FrameReader.h"

namespace Image {

/// OpenEXR files: every part, channel and attribute; scan lines and tiles (the largest level); no deep data. Blocks are
/// read, decompressed and unpacked by OpenEXR itself, except that ZIP and ZIPS go through libdeflate.
class ExrReader : public FrameReader {
public:
    /// Reads and checks the header. Throws ImageError.
    ExrReader(const std::string& path, const Limits& limits);

    Frame readHeader(std::int64_t index) override;
    void readPixels(Frame& frame, unsigned threads, std::int64_t index) override;

private:
    InputFile m_file;
    ExrHeader m_header;
};

} // namespace Image
