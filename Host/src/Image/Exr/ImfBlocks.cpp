#include "Image/Exr/ImfBlocks.h"

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

#include "Image/Exr/ExrHeader.h"

namespace HostImage {

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

/// Keeps what the library writes.
class MemoryStream : public Imf::OStream {
public:
    MemoryStream() : Imf::OStream("memory") {}
    void write(const char bytes[], int n) override {
        const std::size_t count = static_cast<std::size_t>(n);
        if (m_position + count > m_bytes.size()) m_bytes.resize(m_position + count);
        std::memcpy(m_bytes.data() + m_position, bytes, count);
        m_position += count;
    }
    std::uint64_t tellp() override { return m_position; }
    void seekp(std::uint64_t position) override { m_position = static_cast<std::size_t>(position); }
    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_position = 0;
};

Imf::PixelType imfType(PixelType type) { return static_cast<Imf::PixelType>(exrPixelTypeNumber(type)); }

Imf::FrameBuffer planesOf(Part& part) {
    Imf::FrameBuffer buffer;
    for (const Channel& channel : part.channels) {
        Plane& plane = part.planes[channel.plane];
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

std::vector<std::uint8_t> compressWithImf(const Part& part, const std::vector<std::size_t>& channelOrder,
                                          const std::vector<PixelType>& types, const Window& window,
                                          const std::uint8_t* packed, float dwaLevel) {
    // A file in memory that consists of this block alone; its only chunk is what we are after.
    const Imath::Box2i box(Imath::V2i(window.minX, window.minY), Imath::V2i(window.maxX, window.maxY));
    Imf::Header header(box, box);
    header.compression() = static_cast<Imf::Compression>(exrCompressionNumber(part.compression));
    header.dwaCompressionLevel() = dwaLevel;
    // Each channel's lines one below the other, as the library wants them where channels are sub-sampled.
    std::vector<std::vector<std::uint8_t>> planes(part.channels.size());
    for (std::int64_t y = window.minY; y <= window.maxY; ++y) {
        for (const std::size_t i : channelOrder) {
            const Channel& channel = part.channels[i];
            if (y % channel.ySampling != 0) continue;
            const std::size_t samples =
                static_cast<std::size_t>((window.width() + channel.xSampling - 1) / channel.xSampling);
            const std::size_t bytes = samples * bytesPerSample(types[i]);
            planes[i].insert(planes[i].end(), packed, packed + bytes);
            packed += bytes;
        }
    }
    Imf::FrameBuffer buffer;
    for (const std::size_t i : channelOrder) {
        const Channel& channel = part.channels[i];
        header.channels().insert(channel.name, Imf::Channel(imfType(types[i]), channel.xSampling, channel.ySampling,
                                                            channel.perceptuallyLinear));
        const std::int64_t size = static_cast<std::int64_t>(bytesPerSample(types[i]));
        const std::int64_t lineBytes = (window.width() + channel.xSampling - 1) / channel.xSampling * size;
        const std::int64_t origin =
            window.minY / channel.ySampling * lineBytes + window.minX / channel.xSampling * size;
        const std::uintptr_t base =
            reinterpret_cast<std::uintptr_t>(planes[i].data()) - static_cast<std::uintptr_t>(origin);
        buffer.insert(channel.name,
                      Imf::Slice(imfType(types[i]), reinterpret_cast<char*>(base), static_cast<std::size_t>(size),
                                 static_cast<std::size_t>(lineBytes), channel.xSampling, channel.ySampling));
    }
    MemoryStream stream;
    std::size_t start;
    // What is written after the header and the table of one chunk is that chunk: its coordinates, its size, its bytes.
    if (part.tileWidth != 0) {
        header.setTileDescription(
            Imf::TileDescription(static_cast<unsigned>(window.width()), static_cast<unsigned>(window.height())));
        Imf::TiledOutputFile file(stream, header, noThreads);
        start = stream.tellp() + 20;
        file.setFrameBuffer(buffer);
        file.writeTile(0, 0);
    } else {
        Imf::OutputFile file(stream, header, noThreads);
        start = stream.tellp() + 8;
        file.setFrameBuffer(buffer);
        file.writePixels(static_cast<int>(window.height()));
    }
    const std::vector<std::uint8_t>& bytes = stream.bytes();
    if (start >= bytes.size()) throw std::runtime_error("OpenEXR wrote no block");
    return {bytes.begin() + static_cast<std::ptrdiff_t>(start), bytes.end()};
}

} // namespace HostImage
