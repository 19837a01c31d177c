// The least that a job must do to frames of half floats in ZIP, on one thread: inflate and deflate every block with the
// libraries that the program uses, and read and write the pixels once in every stage that they pass. Prints the
// processor time of a frame as one JSON object.
#include <ImathBox.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "Exr/ZipBlock.h"
#include "FrameWriter.h"
#include "ProcessorTime.h"

namespace {

constexpr int linesPerBlock = 16;

/// One read and one write of so many bytes.
double copyMilliseconds(std::size_t bytes) {
    static std::vector<std::uint8_t> from, to;
    from.resize(std::max(from.size(), bytes), 1);
    to.resize(std::max(to.size(), bytes), 2);
    const double begin = processorMilliseconds();
    std::memcpy(to.data(), from.data(), bytes);
    return processorMilliseconds() - begin;
}

struct Codec {
    double inflate = 0.0, deflate = 0.0; ///< ms
    std::size_t bytes = 0;               ///< of the file's blocks
};

Codec codecOf(const std::string& path, std::size_t bytesPerLine) {
    Imf::InputFile file(path.c_str());
    const Imath::Box2i window = file.header().dataWindow();
    Image::ZipBlockDecompressor decompressor;
    Image::ZipBlockCompressor compressor(Image::ZipGoal::Fast);
    std::vector<std::uint8_t> split(bytesPerLine * linesPerBlock), compressed(split.size());
    Codec codec;
    for (int y = window.min.y; y <= window.max.y; y += linesPerBlock) {
        const std::size_t lines = static_cast<std::size_t>(std::min(linesPerBlock, window.max.y - y + 1));
        const char* bytes = nullptr;
        int size = 0;
        file.rawPixelData(y, bytes, size);
        codec.bytes += static_cast<std::size_t>(size);
        const double begin = processorMilliseconds();
        if (!decompressor.decompress(reinterpret_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(size),
                                     split.data(), bytesPerLine * lines))
            throw std::runtime_error(path + " has a block that is not compressed as ZIP of that size.");
        const double middle = processorMilliseconds();
        compressor.compress(split.data(), bytesPerLine * lines, Image::ZipBlockCompressor::Samples::Of16Bits,
                            compressed.data());
        codec.inflate += middle - begin;
        codec.deflate += processorMilliseconds() - middle;
    }
    return codec;
}

} // namespace

int main(int argumentCount, char** arguments) {
    std::vector<std::string> files;
    CLI::App app("Measures what a job on these RGBA half-float ZIP frames cannot do without; prints JSON.");
    app.add_option("files", files)->required();
    CLI11_PARSE(app, argumentCount, arguments);
    try {
        nlohmann::json answer;
        for (const std::string& path : files) {
            const Imath::Box2i window = Imf::InputFile(path.c_str()).header().dataWindow();
            const std::size_t width = static_cast<std::size_t>(window.max.x - window.min.x + 1);
            const std::size_t halves = width * static_cast<std::size_t>(window.max.y - window.min.y + 1) * 8;
            const std::size_t floats = halves * 2;
            const Codec codec = codecOf(path, width * 8);
            double copies = 0.0;
            // The file; its pixels; floats for the node, to the device, through the kernel and back; pixels, split for
            // the encoder; the file.
            for (const std::size_t bytes :
                 {codec.bytes, halves, floats, floats, floats, floats, halves, halves, codec.bytes})
                copies += copyMilliseconds(bytes);
            answer["inflate"].push_back(codec.inflate);
            answer["deflate"].push_back(codec.deflate);
            answer["copies"].push_back(copies);
        }
        std::cout << answer.dump() << '\n';
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return 4;
    }
}
