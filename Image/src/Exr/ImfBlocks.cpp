#include "Exr/ImfBlocks.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfOutputFile.h>
#include <ImfTiledInputPart.h>
#include <ImfTiledOutputFile.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "Exr/ExrHeader.h"

namespace Image {

namespace {

constexpr int noThreads = 0;

/// A file of ours as the library's input.
class FileStream : public Imf::IStream {
public:
    explicit FileStream(const InputFile& file) : Imf::IStream(file.path().c_str()), m_file(file) {}
    bool read(char bytes[], int n) override {
        const std::size_t wanted = static_cast<std::size_t>(n);
        if (m_file.read(bytes, wanted, m_position) != wanted) throw std::runtime_error("unexpected end of file");
        m_position += wanted;
        return m_position < m_file.size();
    }
    std::uint64_t tellg() override { return m_position; }
    void seekg(std::uint64_t position) override { m_position = position; }

private:
    const InputFile& m_file;
    std::uint64_t m_position = 0;
};

/// Keeps what the library writes, in memory that has served before.
class MemoryStream : public Imf::OStream {
public:
    explicit MemoryStream(std::vector<std::uint8_t>& bytes) : Imf::OStream("memory"), m_bytes(bytes) {
        m_bytes.clear();
    }
    void write(const char bytes[], int n) override {
        const std::size_t overwritten = std::min(static_cast<std::size_t>(n), m_bytes.size() - m_position);
        std::copy_n(bytes, overwritten, m_bytes.begin() + static_cast<std::ptrdiff_t>(m_position));
        m_bytes.insert(m_bytes.end(), bytes + overwritten, bytes + n);
        m_position += static_cast<std::size_t>(n);
    }
    std::uint64_t tellp() override { return m_position; }
    void seekp(std::uint64_t position) override {
        m_position = static_cast<std::size_t>(position);
        if (m_position > m_bytes.size()) m_bytes.resize(m_position);
    }

private:
    std::vector<std::uint8_t>& m_bytes;
    std::size_t m_position = 0;
};

Imf::PixelType imfType(PixelType type) { return static_cast<Imf::PixelType>(exrPixelTypeNumber(type)); }

/// The library takes one kind of buffer for reading and for writing.
Imf::FrameBuffer planesOf(const Part& part) {
    Imf::FrameBuffer buffer;
    for (const Channel& channel : part.channels) {
        const Plane& plane = part.planes[channel.plane];
        const std::size_t size = bytesPerSample(plane.type);
        const std::size_t pixel = size * plane.components;
        // The library addresses samples by their coordinates ÷ sampling, from the picture's origin.
        const std::int64_t origin =
            std::int64_t{part.dataWindow.minY / channel.ySampling} * static_cast<std::int64_t>(plane.rowBytes()) +
            std::int64_t{part.dataWindow.minX / channel.xSampling} * static_cast<std::int64_t>(pixel);
        const std::uintptr_t base = reinterpret_cast<std::uintptr_t>(plane.pixels.data()) + channel.component * size -
                                    static_cast<std::uintptr_t>(origin);
        buffer.insert(channel.name, Imf::Slice(imfType(plane.type), reinterpret_cast<char*>(base), pixel,
                                               plane.rowBytes(), channel.xSampling, channel.ySampling));
    }
    return buffer;
}

} // namespace

struct ImfBlockReader::State {
    explicit State(const InputFile& file) : stream(file), parts(stream, noThreads, false) {}

    FileStream stream;
    Imf::MultiPartInputFile parts;
    int partIndex = -1;
    std::unique_ptr<Imf::InputPart> lines;
    std::unique_ptr<Imf::TiledInputPart> tiles;
};

ImfBlockReader::ImfBlockReader(const InputFile& file) : m_state(std::make_unique<State>(file)) {}

ImfBlockReader::~ImfBlockReader() = default;

void ImfBlockReader::readLines(int partIndex, Part& part, const Window& window) {
    if (m_state->partIndex != partIndex) {
        m_state->lines = std::make_unique<Imf::InputPart>(m_state->parts, partIndex);
        m_state->lines->setFrameBuffer(planesOf(part));
        m_state->partIndex = partIndex;
    }
    m_state->lines->readPixels(window.minY, window.maxY);
}

void ImfBlockReader::readTile(int partIndex, Part& part, std::int32_t tileX, std::int32_t tileY) {
    if (m_state->partIndex != partIndex) {
        m_state->tiles = std::make_unique<Imf::TiledInputPart>(m_state->parts, partIndex);
        m_state->tiles->setFrameBuffer(planesOf(part));
        m_state->partIndex = partIndex;
    }
    m_state->tiles->readTile(tileX, tileY);
}

void compressWithImf(const Part& part, const Window& window, const std::string& compression, float dwaLevel,
                     CompressedBlocks& compressed) {
    // A file in memory that consists of these blocks alone.
    const Imath::Box2i box(Imath::V2i(window.minX, window.minY), Imath::V2i(window.maxX, window.maxY));
    Imf::Header header(box, box);
    header.compression() = static_cast<Imf::Compression>(exrCompressionNumber(compression));
    header.dwaCompressionLevel() = dwaLevel;
    for (const Channel& channel : part.channels)
        header.channels().insert(channel.name, Imf::Channel(imfType(part.planes[channel.plane].type), channel.xSampling,
                                                            channel.ySampling, channel.perceptuallyLinear));
    const Imf::FrameBuffer buffer = planesOf(part);
    MemoryStream stream(compressed.bytes);
    std::size_t leader, next;
    // Behind the header and the table stand the blocks, each behind its coordinates and its size.
    if (part.tileWidth != 0) {
        header.setTileDescription(
            Imf::TileDescription(static_cast<unsigned>(window.width()), static_cast<unsigned>(window.height())));
        Imf::TiledOutputFile file(stream, header, noThreads);
        leader = 20;
        next = stream.tellp();
        file.setFrameBuffer(buffer);
        file.writeTile(0, 0);
    } else {
        Imf::OutputFile file(stream, header, noThreads);
        leader = 8;
        next = stream.tellp();
        file.setFrameBuffer(buffer);
        file.writePixels(static_cast<int>(window.height()));
    }
    compressed.blocks.clear();
    while (compressed.bytes.size() - next > leader) {
        std::uint32_t size = 0;
        std::memcpy(&size, compressed.bytes.data() + next + leader - sizeof size, sizeof size);
        compressed.blocks.push_back({next + leader, size});
        next += leader + size;
    }
}

} // namespace Image
