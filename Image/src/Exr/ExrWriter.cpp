#include "Exr/ExrWriter.h"

#include <openexr.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Exr/ExrContext.h"
#include "Exr/ExrHeader.h"
#include "Exr/ImfBlocks.h"
#include "Exr/SampleRows.h"
#include "Exr/ZipBlock.h"
#include "Files.h"
#include "ParallelFor.h"

namespace Image {

namespace {

constexpr float defaultDwaLevel = 45.0f;

/// Lines that are stored as they are go into the file in runs of about so many bytes.
constexpr std::size_t plainRunBytes = 512 << 10;
/// Blocks that the C++ library compresses go to it in runs of up to so many bytes.
constexpr std::size_t imfRunBytes = 8 << 20;

/// What is encoded at once, in the file's order: one of the file's chunks, or a run of them.
struct Block {
    std::size_t part = 0;
    Window window;
    std::int32_t tileX = 0;
    std::int32_t tileY = 0;
    /// The chunks as they stand in the file, once they are there.
    PixelBuffer encoded;
    struct Chunk {
        std::size_t tableIndex = 0; ///< place in the part's chunk table
        std::size_t begin = 0;      ///< in `encoded`
    };
    std::vector<Chunk> chunks;
    bool ready = false;
};

/// Who encodes the blocks of a part.
enum class Encoder {
    Lines,      ///< nobody: scan lines without compression
    Zip,        ///< ourselves: ZIP and ZIPS
    CLibrary,   ///< OpenEXR's C library
    CppLibrary, ///< DWA is only in the C++ library; the C one makes B44's small blocks larger
};

/// A part as it is stored.
struct StoredPart {
    const Part* part = nullptr;
    std::vector<PixelType> types;
    std::vector<std::size_t> channelOrder;
    std::string compression;
    std::int32_t linesPerBlock = 1;
    Encoder encoder = Encoder::CLibrary;
    bool multiPart = false;
    float dwaLevel = 0.0f;
    std::size_t chunkCount = 0;
    std::size_t tableIndex = 0; ///< of its first chunk in the file's table

    ZipBlockCompressor::Samples mostSamples() const {
        const auto isShort = [](PixelType type) { return bytesPerSample(type) == 2; };
        const auto shortOnes = static_cast<std::size_t>(std::count_if(types.begin(), types.end(), isShort));
        return shortOnes >= (types.size() - shortOnes) * 2 ? ZipBlockCompressor::Samples::Of16Bits
                                                           : ZipBlockCompressor::Samples::Of32Bits;
    }
};

/// What the callbacks of one thread's pipeline need to know about the block at hand.
struct Source {
    const StoredPart* stored = nullptr;
    Block* block = nullptr;
    std::vector<std::uint8_t*> rows;
    std::vector<float> floats;
    std::vector<std::uint8_t> converted;
    /// Of a block that is compressed as ZIP: a line, and all lines' bytes split.
    std::vector<std::uint8_t> line;
    std::vector<std::uint8_t> split;
    Part band;
    CompressedBlocks blocks;
};

/// Bytes of the block with all its channels one after the other.
std::size_t packedBytes(const StoredPart& stored, const Window& window) {
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < stored.types.size(); ++i) {
        const Channel& channel = stored.part->channels[i];
        bytes += samplesBetween(window.minX, window.maxX, channel.xSampling) *
                 samplesBetween(window.minY, window.maxY, channel.ySampling) * bytesPerSample(stored.types[i]);
    }
    return bytes;
}

/// Bytes of what stands before a chunk's own in the file.
std::size_t leaderBytes(const StoredPart& stored) {
    return (stored.multiPart ? 4u : 0u) + (stored.part->tileWidth != 0 ? 16u : 4u) + 4u;
}

/// Writes them; returns the place behind.
std::uint8_t* writeLeader(const Block& block, std::int32_t firstLine, std::size_t bytes, const StoredPart& stored,
                          std::uint8_t* to) {
    const auto append = [&to](std::int32_t value) {
        std::memcpy(to, &value, sizeof value);
        to += sizeof value;
    };
    if (stored.multiPart) append(static_cast<std::int32_t>(block.part));
    if (stored.part->tileWidth != 0) {
        append(block.tileX);
        append(block.tileY);
        append(0); // both levels
        append(0);
    } else {
        append(firstLine);
    }
    append(static_cast<std::int32_t>(bytes));
    return to;
}

/// Makes n bytes the block's only chunk.
void setChunk(const Source& source, const std::uint8_t* from, std::size_t n) {
    Block& block = *source.block;
    block.encoded.resize(leaderBytes(*source.stored) + n);
    std::memcpy(writeLeader(block, block.window.minY, n, *source.stored, block.encoded.data()), from, n);
}

/// Samples of a plane as they are stored: where they are if that is their type, else converted.
const std::uint8_t* asStored(Source& source, PixelType planeType, PixelType type, const std::uint8_t* from,
                             std::size_t samples) {
    if (type == planeType) return from;
    source.converted.resize(samples * bytesPerSample(type));
    if (planeType == PixelType::Float) {
        samplesFromFloat(type, reinterpret_cast<const float*>(from), source.converted.data(), samples);
    } else {
        source.floats.resize(samples);
        samplesToFloat(planeType, from, source.floats.data(), samples);
        samplesFromFloat(type, source.floats.data(), source.converted.data(), samples);
    }
    return source.converted.data();
}

/// Lays out lines of a window (channel after channel in each) from the part's planes, converting where stored
/// otherwise.
void packLines(Source& source, const Window& window, std::uint8_t* to) {
    const StoredPart& stored = *source.stored;
    const Part& part = *stored.part;
    source.rows.resize(part.planes.size() * 4);
    for (std::int64_t y = window.minY; y <= window.maxY; ++y) {
        std::fill(source.rows.begin(), source.rows.end(), nullptr);
        for (const std::size_t index : stored.channelOrder) {
            const Channel& channel = part.channels[index];
            if (y % channel.ySampling != 0) continue;
            source.rows[channel.plane * 4 + channel.component] = to;
            to += samplesBetween(window.minX, window.maxX, channel.xSampling) * bytesPerSample(stored.types[index]);
        }
        for (std::size_t p = 0; p < part.planes.size(); ++p) {
            std::uint8_t* const* const rows = source.rows.data() + p * 4;
            if (rows[0] == nullptr) continue;
            const Plane& plane = part.planes[p];
            const std::size_t member = part.firstChannelOf(p);
            const Channel& channel = part.channels[member];
            const std::size_t row = samplesBetween(part.dataWindow.minY, y - 1, channel.ySampling);
            const std::size_t column =
                samplesBetween(part.dataWindow.minX, std::int64_t{window.minX} - 1, channel.xSampling);
            const std::size_t pixels = samplesBetween(window.minX, window.maxX, channel.xSampling);
            const PixelType type = stored.types[member];
            const std::uint8_t* const from = asStored(
                source, plane.type, type, plane.row(row) + column * plane.components * bytesPerSample(plane.type),
                pixels * plane.components);
            deinterleaveRow(from, plane.components, bytesPerSample(type), rows, pixels);
        }
    }
}

/// The zlib stream of the block's split bytes, or the block as it is where that is smaller.
void packZip(Source& source, ZipBlockCompressor& compressor) {
    const StoredPart& stored = *source.stored;
    Block& block = *source.block;
    const std::size_t n = packedBytes(stored, block.window);
    if (n > std::numeric_limits<std::int32_t>::max()) throw std::runtime_error("it is larger than 2 GB");
    source.split.resize(n);
    ByteSplitter splitter(source.split.data(), n);
    Window line = block.window;
    for (std::int64_t y = block.window.minY; y <= block.window.maxY; ++y) {
        line.minY = line.maxY = static_cast<std::int32_t>(y);
        source.line.resize(packedBytes(stored, line));
        packLines(source, line, source.line.data());
        splitter.add(source.line.data(), source.line.size());
    }
    const std::size_t leader = leaderBytes(stored);
    block.encoded.resize(leader + n);
    const std::size_t compressed =
        compressor.compress(source.split.data(), n, stored.mostSamples(), block.encoded.data() + leader);
    const std::size_t size = compressed != 0 ? compressed : n;
    block.encoded.resize(leader + size);
    std::uint8_t* const behind = writeLeader(block, block.window.minY, size, stored, block.encoded.data());
    if (compressed == 0) packLines(source, block.window, behind);
}

exr_result_t pack(exr_encode_pipeline_t* pipeline) {
    Source& source = *static_cast<Source*>(pipeline->encoding_user_data);
    const std::size_t bytes = packedBytes(*source.stored, source.block->window);
    std::uint8_t* const to = static_cast<std::uint8_t*>(pipeline->packed_buffer);
    if (to == nullptr || pipeline->packed_alloc_size < bytes) return EXR_ERR_INVALID_ARGUMENT;
    pipeline->packed_bytes = bytes;
    packLines(source, source.block->window, to);
    return EXR_ERR_SUCCESS;
}

/// A run of lines as they are stored, each with its leader. The library would do it line by line, at a cost of its own
/// for each.
void packPlain(Source& source) {
    const StoredPart& stored = *source.stored;
    Block& block = *source.block;
    const std::size_t leader = leaderBytes(stored);
    Window line = block.window;
    std::size_t total = 0;
    for (Block::Chunk& chunk : block.chunks) {
        line.minY = line.maxY = stored.part->dataWindow.minY + static_cast<std::int32_t>(chunk.tableIndex);
        chunk.begin = total;
        total += leader + packedBytes(stored, line);
    }
    block.encoded.resize(total);
    for (std::size_t i = 0; i < block.chunks.size(); ++i) {
        const Block::Chunk& chunk = block.chunks[i];
        const std::size_t end = i + 1 < block.chunks.size() ? block.chunks[i + 1].begin : total;
        line.minY = line.maxY = stored.part->dataWindow.minY + static_cast<std::int32_t>(chunk.tableIndex);
        packLines(
            source, line,
            writeLeader(block, line.minY, end - chunk.begin - leader, stored, block.encoded.data() + chunk.begin));
    }
}

/// The part where all its channels lie in memory as they are stored; else `source.band` with the window's pixels.
const Part& partAsStored(Source& source, const Window& window) {
    const StoredPart& stored = *source.stored;
    const Part& part = *stored.part;
    const auto isAsStored = [&](const Channel& channel) {
        return part.planes[channel.plane].type == stored.types[static_cast<std::size_t>(&channel - &part.channels[0])];
    };
    if (std::all_of(part.channels.begin(), part.channels.end(), isAsStored)) return part;
    Part& band = source.band;
    band.dataWindow = window;
    band.tileWidth = part.tileWidth;
    band.channels = part.channels;
    band.planes.resize(part.planes.size());
    for (std::size_t p = 0; p < part.planes.size(); ++p) {
        const std::size_t member = part.firstChannelOf(p);
        const Channel& channel = part.channels[member];
        const Plane& from = part.planes[p];
        Plane& to = band.planes[p];
        to.type = stored.types[member];
        to.components = from.components;
        to.width = samplesBetween(window.minX, window.maxX, channel.xSampling);
        to.height = samplesBetween(window.minY, window.maxY, channel.ySampling);
        to.pixels.resize(to.rowBytes() * to.height);
        const std::size_t row = samplesBetween(part.dataWindow.minY, std::int64_t{window.minY} - 1, channel.ySampling);
        const std::size_t column =
            samplesBetween(part.dataWindow.minX, std::int64_t{window.minX} - 1, channel.xSampling);
        for (std::size_t y = 0; y < to.height; ++y) {
            const std::uint8_t* const samples =
                from.row(row + y) + column * from.components * bytesPerSample(from.type);
            std::memcpy(to.row(y), asStored(source, from.type, to.type, samples, to.width * to.components),
                        to.rowBytes());
        }
    }
    return band;
}

/// A run of blocks that the C++ library compresses, each with its leader.
void packImf(Source& source) {
    const StoredPart& stored = *source.stored;
    Block& block = *source.block;
    compressWithImf(partAsStored(source, block.window), block.window, stored.compression, stored.dwaLevel,
                    source.blocks);
    const std::size_t leader = leaderBytes(stored);
    if (source.blocks.blocks.size() != block.chunks.size()) throw std::runtime_error("OpenEXR wrote too few blocks");
    std::size_t total = 0;
    for (const CompressedBlocks::Block& compressed : source.blocks.blocks) total += leader + compressed.size;
    block.encoded.resize(total);
    const std::size_t first = std::min(block.chunks.front().tableIndex, block.chunks.back().tableIndex);
    std::size_t begin = 0;
    for (Block::Chunk& chunk : block.chunks) {
        const std::size_t index = chunk.tableIndex - first;
        const CompressedBlocks::Block& compressed = source.blocks.blocks[index];
        const std::int32_t line = block.window.minY + static_cast<std::int32_t>(index) * stored.linesPerBlock;
        chunk.begin = begin;
        std::uint8_t* const to = writeLeader(block, line, compressed.size, stored, block.encoded.data() + begin);
        std::memcpy(to, source.blocks.bytes.data() + compressed.begin, compressed.size);
        begin += leader + compressed.size;
    }
}

/// Takes the compressed block instead of letting the library write it: blocks go into the file in one order, whichever
/// thread is first.
exr_result_t keep(exr_encode_pipeline_t* pipeline) {
    Source& source = *static_cast<Source*>(pipeline->encoding_user_data);
    // A block that would not become smaller is stored as it is.
    const bool compressed = pipeline->compressed_buffer != nullptr && pipeline->compressed_bytes != 0 &&
                            pipeline->compressed_bytes < pipeline->packed_bytes;
    const std::uint8_t* const from =
        static_cast<const std::uint8_t*>(compressed ? pipeline->compressed_buffer : pipeline->packed_buffer);
    const std::size_t n = compressed ? pipeline->compressed_bytes : static_cast<std::size_t>(pipeline->packed_bytes);
    setChunk(source, from, n);
    return EXR_ERR_SUCCESS;
}

/// Owns an encoding pipeline's buffers.
class Pipeline {
public:
    explicit Pipeline(exr_context_t context) : m_context(context) {}
    ~Pipeline() { reset(); }
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    exr_result_t encode(const exr_chunk_info_t& info, int part, Source& source) {
        if (m_part != part) reset();
        exr_result_t result;
        const bool fresh = m_part < 0;
        if (fresh) {
            result = exr_encoding_initialize(m_context, part, &info, &m_pipeline);
            m_part = part;
        } else {
            result = exr_encoding_update(m_context, part, &info, &m_pipeline);
        }
        if (result != EXR_ERR_SUCCESS) return result;
        m_pipeline.encoding_user_data = &source;
        // The library wants to see that every channel has pixels; pack takes them from the planes.
        for (std::int16_t i = 0; i < m_pipeline.channel_count; ++i) {
            exr_coding_channel_info_t& channel = m_pipeline.channels[i];
            channel.encode_from_ptr = source.stored->part->planes.front().pixels.data();
            channel.user_bytes_per_element = channel.bytes_per_element;
            channel.user_data_type = channel.data_type;
            channel.user_pixel_stride = channel.bytes_per_element * 2;
            channel.user_line_stride = channel.user_pixel_stride;
        }
        if (fresh) result = exr_encoding_choose_default_routines(m_context, part, &m_pipeline);
        if (result != EXR_ERR_SUCCESS) return result;
        m_pipeline.convert_and_pack_fn = pack;
        m_pipeline.yield_until_ready_fn = nullptr;
        m_pipeline.write_fn = keep;
        return exr_encoding_run(m_context, part, &m_pipeline);
    }

private:
    void reset() {
        if (m_part >= 0) exr_encoding_destroy(m_context, &m_pipeline);
        m_pipeline = exr_encode_pipeline_t{};
        m_part = -1;
    }

    exr_context_t m_context;
    exr_encode_pipeline_t m_pipeline{};
    int m_part = -1;
};

exr_attr_box2i_t box(const Window& window) {
    exr_attr_box2i_t value{};
    value.min.x = window.minX;
    value.min.y = window.minY;
    value.max.x = window.maxX;
    value.max.y = window.maxY;
    return value;
}

float dwaLevel(const Part& part) {
    const Attribute* attribute = part.findAttribute("dwaCompressionLevel");
    float level = defaultDwaLevel;
    if (attribute != nullptr && attribute->type == "float" && attribute->value.size() == sizeof level)
        std::memcpy(&level, attribute->value.data(), sizeof level);
    return std::isfinite(level) && level >= 0.0f ? level : defaultDwaLevel;
}

/// Tells the library what it has to know to encode the part.
void declarePart(const ExrContext& context, const std::string& path, const StoredPart& stored, std::size_t partCount) {
    const Part& part = *stored.part;
    int index = 0;
    const auto check = [&](exr_result_t result) {
        if (result != EXR_ERR_SUCCESS) throw ImageError(path, "cannot be written: " + context.errorText(result));
    };
    check(exr_add_part(context.get(), partCount > 1 ? part.name.c_str() : nullptr,
                       part.tileWidth != 0 ? EXR_STORAGE_TILED : EXR_STORAGE_SCANLINE, &index));
    const exr_attr_box2i_t displayWindow = box(part.displayWindow);
    const exr_attr_box2i_t dataWindow = box(part.dataWindow);
    exr_attr_v2f_t centre{};
    const exr_compression_t compression = static_cast<exr_compression_t>(exrCompressionNumber(part.compression));
    check(exr_initialize_required_attr(context.get(), index, &displayWindow, &dataWindow, part.pixelAspectRatio,
                                       &centre, 1.0f, EXR_LINEORDER_INCREASING_Y, compression));
    if (part.tileWidth != 0)
        check(exr_set_tile_descriptor(context.get(), index, part.tileWidth, part.tileHeight, EXR_TILE_ONE_LEVEL,
                                      EXR_TILE_ROUND_DOWN));
    for (const std::size_t i : stored.channelOrder) {
        const Channel& channel = part.channels[i];
        check(exr_add_channel(context.get(), index, channel.name.c_str(),
                              static_cast<exr_pixel_type_t>(exrPixelTypeNumber(stored.types[i])),
                              channel.perceptuallyLinear ? EXR_PERCEPTUALLY_LINEAR : EXR_PERCEPTUALLY_LOGARITHMIC,
                              channel.xSampling, channel.ySampling));
    }
}

Encoder encoderOf(const Part& part) {
    if (part.compression.starts_with("dwa") || part.compression.starts_with("b44")) return Encoder::CppLibrary;
    if (part.compression == "zip" || part.compression == "zips") return Encoder::Zip;
    return part.compression == "none" && part.tileWidth == 0 ? Encoder::Lines : Encoder::CLibrary;
}

/// Lines that are encoded at once.
std::int64_t linesPerRun(const StoredPart& stored, unsigned threads) {
    const Part& part = *stored.part;
    const Window& whole = part.dataWindow;
    const std::int64_t lines = stored.linesPerBlock;
    if (part.tileWidth != 0) return part.tileHeight;
    const auto runOf = [&](std::size_t bytes, std::int64_t unit) {
        const Window one{whole.minX, whole.minY, whole.maxX,
                         static_cast<std::int32_t>(std::min(whole.minY + unit - 1, std::int64_t{whole.maxY}))};
        return static_cast<std::int64_t>(bytes / std::max<std::size_t>(packedBytes(stored, one), 1)) + 1;
    };
    if (stored.encoder == Encoder::Lines) return runOf(plainRunBytes, 1);
    if (stored.encoder != Encoder::CppLibrary) return lines;
    // A picture of its own, as which the library takes a run, begins on a line that every channel has.
    for (const Channel& channel : part.channels)
        if (lines % channel.ySampling != 0) return whole.height();
    const std::int64_t runsPerThread = 4;
    const std::int64_t fair = whole.height() / (lines * runsPerThread * std::max(threads, 1u));
    return lines * std::clamp<std::int64_t>(fair, 1, runOf(imfRunBytes, lines));
}

std::vector<Block> blocksOf(const StoredPart& stored, std::size_t index, unsigned threads) {
    std::vector<Block> blocks;
    const Part& part = *stored.part;
    const Window& whole = part.dataWindow;
    const std::int64_t width = part.tileWidth != 0 ? std::int64_t{part.tileWidth} : whole.width();
    const std::int64_t height = linesPerRun(stored, threads);
    std::size_t tableIndex = 0;
    for (std::int64_t y = whole.minY; y <= whole.maxY; y += height) {
        for (std::int64_t x = whole.minX; x <= whole.maxX; x += width) {
            Block block;
            block.part = index;
            block.window = {static_cast<std::int32_t>(x), static_cast<std::int32_t>(y),
                            static_cast<std::int32_t>(std::min<std::int64_t>(x + width - 1, whole.maxX)),
                            static_cast<std::int32_t>(std::min<std::int64_t>(y + height - 1, whole.maxY))};
            block.tileX = static_cast<std::int32_t>((x - whole.minX) / width);
            block.tileY = static_cast<std::int32_t>((y - whole.minY) / height);
            const std::int64_t linesPerChunk = part.tileWidth != 0 ? height : std::int64_t{stored.linesPerBlock};
            const std::int64_t chunks = (block.window.height() + linesPerChunk - 1) / linesPerChunk;
            for (std::int64_t i = 0; i < chunks; ++i) block.chunks.push_back({tableIndex++, 0});
            if (part.lineOrder == LineOrder::DecreasingY) std::reverse(block.chunks.begin(), block.chunks.end());
            blocks.push_back(std::move(block));
        }
    }
    return blocks;
}

/// Checks what the header's composition does not, and applies the options.
std::vector<Part> preparedParts(const std::string& path, const Frame& frame, const WriteOptions& options) {
    if (frame.parts.empty()) throw ImageError(path, "cannot be written: the frame has no parts");
    std::vector<Part> parts(frame.parts.size());
    std::set<std::string> names;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Part& from = frame.parts[i];
        Part& part = parts[i];
        if (frame.parts.size() > 1 && (from.name.empty() || !names.insert(from.name).second))
            throw ImageError(path, "cannot be written: the parts need different names");
        // Everything but the pixels, which stay where they are.
        part.name = from.name;
        part.dataWindow = from.dataWindow;
        part.displayWindow = from.displayWindow;
        part.pixelAspectRatio = from.pixelAspectRatio;
        part.lineOrder = from.lineOrder;
        part.tileWidth = from.tileWidth;
        part.tileHeight = from.tileHeight;
        part.channels = from.channels;
        part.attributes = from.attributes;
        part.compression = options.compression ? *options.compression : from.compression;
        if (exrCompressionNumber(part.compression) < 0) {
            if (options.compression)
                throw ImageError(path,
                                 "cannot be written: \"" + part.compression +
                                     "\" is not a compression of OpenEXR; choose none, rle, zips, zip, piz, pxr24, "
                                     "b44, b44a, dwaa or dwab");
            // Another format's own compression.
            part.compression = "zip";
        }
        if (part.tileWidth == 0 && part.lineOrder == LineOrder::RandomY) part.lineOrder = LineOrder::IncreasingY;
        if (part.dataWindow.width() < 1 || part.dataWindow.height() < 1 || part.channels.empty())
            throw ImageError(path, "cannot be written: a part has no pixels");
        // The library checks these too, but does not say which channel it means.
        for (const Channel& channel : part.channels)
            if (!exrSamplingFits(channel, part.dataWindow))
                throw ImageError(path, "cannot be written: the sub-sampled channel " + channel.name +
                                           " does not fit the data window");
        if (!(part.pixelAspectRatio >= 1e-6f && part.pixelAspectRatio <= 1e6f)) part.pixelAspectRatio = 1.0f;
    }
    return parts;
}

/// The parts as the options want them stored; `parts` outlive what is answered.
std::vector<StoredPart> storedParts(const ExrContext& context, const std::string& path, const std::vector<Part>& parts,
                                    const WriteOptions& options) {
    std::vector<StoredPart> stored(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Part& part = parts[i];
        stored[i].part = &part;
        for (const Channel& channel : part.channels)
            stored[i].types.push_back(exrStoredType(path, channel.type, options));
        stored[i].channelOrder = exrChannelOrder(part);
        stored[i].dwaLevel = dwaLevel(part);
        stored[i].compression = part.compression;
        stored[i].encoder = encoderOf(part);
        stored[i].multiPart = parts.size() > 1;
        declarePart(context, path, stored[i], parts.size());
    }
    return stored;
}

/// The blocks of all parts in the file's order. Sets what the parts know of their blocks.
std::vector<Block> layOutBlocks(const ExrContext& context, const std::string& path, std::vector<StoredPart>& stored,
                                unsigned threads) {
    const auto check = [&](exr_result_t result) {
        if (result != EXR_ERR_SUCCESS) throw ImageError(path, "cannot be written: " + context.errorText(result));
    };
    check(exr_write_header(context.get()));
    std::vector<Block> blocks;
    for (std::size_t i = 0; i < stored.size(); ++i) {
        if (stored[i].part->tileWidth == 0)
            check(exr_get_scanlines_per_chunk(context.get(), static_cast<int>(i), &stored[i].linesPerBlock));
        std::vector<Block> own = blocksOf(stored[i], i, threads);
        for (const Block& block : own) stored[i].chunkCount += block.chunks.size();
        if (stored[i].part->lineOrder == LineOrder::DecreasingY) std::reverse(own.begin(), own.end());
        std::move(own.begin(), own.end(), std::back_inserter(blocks));
    }
    return blocks;
}

/// Encodes blocks on one thread.
class BlockEncoder {
public:
    /// `libraryAccess` is shared by all encoders of a context.
    BlockEncoder(const std::string& path, const ExrContext& context, std::mutex& libraryAccess, ZipGoal zip)
        : m_path(path),
          m_context(context),
          m_libraryAccess(libraryAccess),
          m_pipeline(context.get()),
          m_compressor(zip) {}

    /// Fills block.encoded, whose memory is reused. Throws ImageError.
    void encode(const StoredPart& stored, Block& block) {
        m_source.stored = &stored;
        m_source.block = &block;
        switch (stored.encoder) {
            case Encoder::Lines:
                return packPlain(m_source);
            case Encoder::Zip:
                return explained(block, [this] { packZip(m_source, m_compressor); });
            case Encoder::CppLibrary:
                return explained(block, [this] { packImf(m_source); });
            case Encoder::CLibrary:
                return encodeWithCLibrary(stored, block);
        }
    }

private:
    template <typename Encode>
    void explained(const Block& block, Encode encode) const try {
        encode();
    } catch (const std::exception& error) {
        throw notCompressed(block, error.what());
    }

    void encodeWithCLibrary(const StoredPart& stored, const Block& block) {
        const int part = static_cast<int>(block.part);
        exr_chunk_info_t info{};
        exr_result_t status = EXR_ERR_SUCCESS;
        {
            const std::lock_guard<std::mutex> lock(m_libraryAccess);
            status = stored.part->tileWidth != 0
                         ? exr_write_tile_chunk_info(m_context.get(), part, block.tileX, block.tileY, 0, 0, &info)
                         : exr_write_scanline_chunk_info(m_context.get(), part, block.window.minY, &info);
        }
        if (status == EXR_ERR_SUCCESS) status = m_pipeline.encode(info, part, m_source);
        if (status != EXR_ERR_SUCCESS) throw notCompressed(block, m_context.errorText(status));
    }

    ImageError notCompressed(const Block& block, const std::string& cause) const {
        return ImageError(m_path, "the block at line " + std::to_string(block.window.minY) +
                                      " could not be compressed (" + cause + ")");
    }

    const std::string& m_path;
    const ExrContext& m_context;
    std::mutex& m_libraryAccess;
    Pipeline m_pipeline;
    ZipBlockCompressor m_compressor;
    Source m_source;
};

/// The file of encoded blocks, in the order in which they were laid out, whichever thread is first.
class BlockFile {
public:
    /// Writes the header, and leaves room for the table of the blocks' places. Throws ImageError, as the others do.
    BlockFile(const std::string& path, bool makesFile, const std::string& header, std::vector<StoredPart>& stored,
              std::vector<Block>& blocks)
        : m_stored(stored), m_blocks(blocks), m_tableBegin(header.size()), m_file(path, makesFile) {
        std::size_t chunks = 0;
        for (StoredPart& part : stored) {
            part.tableIndex = chunks;
            chunks += part.chunkCount;
        }
        m_table.resize(chunks);
        m_end = m_tableBegin + chunks * 8;
        m_file.write(header.data(), header.size(), 0);
    }

    /// Takes a block that is encoded. Whoever has made the next block writes it and all that wait for it; others
    /// continue meanwhile. Answers memory that is free again, perhaps none. Any thread.
    PixelBuffer add(Block& block) {
        std::vector<std::pair<std::uint64_t, PixelBuffer>> writes;
        {
            const std::lock_guard<std::mutex> lock(m_access);
            block.ready = true;
            for (; m_next < m_blocks.size() && m_blocks[m_next].ready; ++m_next) {
                Block& done = m_blocks[m_next];
                for (const Block::Chunk& chunk : done.chunks)
                    m_table[m_stored[done.part].tableIndex + chunk.tableIndex] = m_end + chunk.begin;
                const std::size_t size = done.encoded.size();
                writes.emplace_back(m_end, std::move(done.encoded));
                m_end += size;
            }
        }
        PixelBuffer spare;
        for (auto& [at, bytes] : writes) {
            m_file.write(bytes.data(), bytes.size(), at);
            spare = std::move(bytes);
        }
        return spare;
    }

    /// Once all blocks are there.
    void close() {
        m_file.write(m_table.data(), m_table.size() * 8, m_tableBegin);
        m_file.close();
    }

private:
    const std::vector<StoredPart>& m_stored;
    std::vector<Block>& m_blocks;
    const std::uint64_t m_tableBegin;
    OutputFile m_file;
    std::mutex m_access; ///< guards what follows, and whether a block is ready
    std::vector<std::uint64_t> m_table;
    std::uint64_t m_end = 0;
    std::size_t m_next = 0;
};

} // namespace

PixelType exrStoredType(const std::string& path, PixelType type, const WriteOptions& options) {
    if (type == PixelType::UInt32) return type;
    if (options.pixelType) {
        if (exrPixelTypeNumber(*options.pixelType) < 0)
            throw ImageError(path,
                             "cannot be written: OpenEXR stores half, float or 32-bit integers; choose half or float");
        return *options.pixelType;
    }
    if (type == PixelType::UInt8) return PixelType::Half;
    return type == PixelType::UInt16 ? PixelType::Float : type;
}

void writeExr(const std::string& path, const Frame& frame, const WriteOptions& options) {
    const std::vector<Part> headers = preparedParts(path, frame, options);
    const ExrContext context(path);
    std::vector<StoredPart> stored = storedParts(context, path, headers, options);
    std::vector<Block> blocks = layOutBlocks(context, path, stored, options.threads);
    std::vector<std::vector<PixelType>> types;
    std::vector<std::int32_t> chunkCounts;
    for (const StoredPart& part : stored) {
        types.push_back(part.types);
        chunkCounts.push_back(static_cast<std::int32_t>(part.chunkCount));
    }
    const std::string header = composeExrHeader(path, headers, types, chunkCounts);

    // From here on the parts with the pixels count; their compression and types are settled above.
    for (std::size_t i = 0; i < stored.size(); ++i) stored[i].part = &frame.parts[i];
    BlockFile file(path, options.makesFile, header, stored, blocks);
    std::mutex libraryAccess;
    parallelFor(options.threads, blocks.size(), [&](WorkQueue& queue) {
        BlockEncoder encoder(path, context, libraryAccess, options.zip);
        PixelBuffer spare; // memory of a block that is written already
        for (std::size_t i = 0; queue.next(i);) {
            blocks[i].encoded = std::move(spare);
            encoder.encode(stored[blocks[i].part], blocks[i]);
            spare = file.add(blocks[i]);
        }
    });
    file.close();
}

} // namespace Image
