#pragma once

#include <ImathBox.h>
#include <ImfCompression.h>
#include <half.h>

#include <string>
#include <vector>

/// Reading and writing of benchmark frames with OpenEXR as it comes: half floats, four channels (R, G, B, A) a layer.
class ExrClip {
public:
    struct Frame {
        int width = 0;
        int height = 0;
        int layers = 1;
        std::vector<half> values; ///< layer by layer width × height × 4, row by row
    };

    /// none, zip, zips, piz, dwaa, dwab, rle, pxr24, b44 or b44a. Throws std::invalid_argument for others.
    static Imf::Compression compression(const std::string& name);

    /// Reads a frame into floats of the layout that the frame's own values have, and sets its shape but not its values;
    /// the memory of `values` is used again. Throws the library's exceptions, as all below.
    static void read(const std::string& path, Frame& frame, std::vector<float>& values);
    static void write(const std::string& path, const Frame& frame, Imf::Compression compression);

    /// Writes float values, `channels` per pixel (3 or 4), uncompressed.
    static void writeFloat(const std::string& path, int width, int height, int channels,
                           const std::vector<float>& values);

private:
    static std::string channelName(int layer, int channel);
};
