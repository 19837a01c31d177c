#include "Exr/ExrReader.h"

#include <openexr.h>

#include <algorithm>
#include <memory>
#include <new>

#include "Exr/ExrContext.h"
#include "Exr/ImfBlocks.h"
#include "Exr/SampleRows.h"
#include "Exr/ZipBlock.h"
#include "ParallelFor.h"

namespace Image {

namespace {

constexpr const char* incomplete = "the file ends before its pixels do; it is incomplete, copy or render it again";

/// A block to decode: lines minY … maxY of columns minX … maxX of a part.
struct Block {
    std::size_t part = 0;
    Window window;
    std::int32_t tileX = 0;
    std::int32_t tileY = 0;
};

/// What the callbacks of one thread's pipeline need to know about the block at hand.
struct Target {
    Part* part = nullptr;
    const Block* block = nullptr;
    ZipBlockDecompressor* decompressor = nullptr;
    /// The block's bytes are still split.
    bool isSplit = false;
    /// A line of such a block.
    std::vector<std::uint8_t> line;
    /// The part's channel for each of the pipeline's.
    std::vector<std::size_t> channelOf;
    std::vector<const std::uint8_t*> rows;
};

exr_result_t inflateZip(exr_decode_pipeline_t* pipeline) {
    Target& target = *static_cast<Target*>(pipeline->decoding_user_data);
    const std::size_t packed = static_cast<std::size_t>(pipeline->chunk.packed_size);
    const std::size_t unpacked = static_cast<std::size_t>(pipeline->chunk.unpacked_size);
    std::uint8_t* const to = static_cast<std::uint8_t*>(pipeline->unpacked_buffer);
    const std::uint8_t* const from = static_cast<const std::uint8_t*>(pipeline->packed_buffer);
    if (from == nullptr || to == nullptr) return EXR_ERR_CORRUPT_CHUNK;
    // A block that would not have become smaller is stored as it is; the library then has both names for one buffer.
    if (from == to) return EXR_ERR_SUCCESS;
    if (pipeline->unpacked_alloc_size < unpacked) return EXR_ERR_CORRUPT_CHUNK;
    if (packed == unpacked) {
        std::copy(from, from + unpacked, to);
        return EXR_ERR_SUCCESS;
    }
    target.isSplit = true;
    return target.decompressor->decompress(from, packed, to, unpacked) ? EXR_ERR_SUCCESS : EXR_ERR_CORRUPT_CHUNK;
}

/// Bytes of a line of the block, all channels one after the other.
std::size_t lineBytes(const Target& target, std::int64_t y) {
    const Window& window = target.block->window;
    std::size_t bytes = 0;
    for (const std::size_t index : target.channelOf) {
        const Channel& channel = target.part->channels[index];
        if (y % channel.ySampling != 0) continue;
        bytes += samplesBetween(window.minX, window.maxX, channel.xSampling) * bytesPerSample(channel.type);
    }
    return bytes;
}

/// Moves a block's lines (channel after channel in each) into the part's planes.
exr_result_t unpack(exr_decode_pipeline_t* pipeline) {
    Target& target = *static_cast<Target*>(pipeline->decoding_user_data);
    Part& part = *target.part;
    const Window& window = target.block->window;
    const bool compressed = pipeline->chunk.compression != EXR_COMPRESSION_NONE;
    const std::uint8_t* from =
        static_cast<const std::uint8_t*>(compressed ? pipeline->unpacked_buffer : pipeline->packed_buffer);
    const std::size_t available =
        static_cast<std::size_t>(compressed ? pipeline->chunk.unpacked_size : pipeline->chunk.packed_size);
    if (from == nullptr) return EXR_ERR_CORRUPT_CHUNK;
    const std::uint8_t* const end = from + available;
    ByteMerger merger(from, target.isSplit ? available : 0);
    target.rows.resize(part.planes.size() * 4);
    for (std::int64_t y = window.minY; y <= window.maxY; ++y) {
        const std::size_t bytes = lineBytes(target, y);
        if (static_cast<std::size_t>(end - from) < bytes) return EXR_ERR_CORRUPT_CHUNK;
        const std::uint8_t* sample = from;
        from += bytes;
        if (target.isSplit) {
            target.line.resize(bytes);
            merger.next(target.line.data(), bytes);
            sample = target.line.data();
        }
        std::fill(target.rows.begin(), target.rows.end(), nullptr);
        for (const std::size_t index : target.channelOf) {
            const Channel& channel = part.channels[index];
            if (y % channel.ySampling != 0) continue;
            target.rows[channel.plane * 4 + channel.component] = sample;
            sample += samplesBetween(window.minX, window.maxX, channel.xSampling) * bytesPerSample(channel.type);
        }
        for (std::size_t p = 0; p < part.planes.size(); ++p) {
            const std::uint8_t* const* const rows = target.rows.data() + p * 4;
            if (rows[0] == nullptr) continue;
            Plane& plane = part.planes[p];
            const Channel& member = part.channels[part.firstChannelOf(p)];
            const std::size_t size = bytesPerSample(plane.type);
            const std::int64_t sampling = member.xSampling;
            const std::size_t row = samplesBetween(part.dataWindow.minY, y - 1, member.ySampling);
            const std::size_t column = samplesBetween(part.dataWindow.minX, std::int64_t{window.minX} - 1, sampling);
            interleaveRow(rows, plane.components, size, plane.row(row) + column * plane.components * size,
                          samplesBetween(window.minX, window.maxX, sampling));
        }
    }
    return EXR_ERR_SUCCESS;
}

/// Owns a decoding pipeline's buffers.
class Pipeline {
public:
    explicit Pipeline(exr_context_t context) : m_context(context) {}
    ~Pipeline() { reset(); }
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    exr_result_t decode(const exr_chunk_info_t& info, int part, Target& target) {
        if (m_part != part) reset();
        exr_result_t result;
        const bool fresh = m_part < 0;
        if (fresh) {
            result = exr_decoding_initialize(m_context, part, &info, &m_pipeline);
            m_part = part;
        } else {
            result = exr_decoding_update(m_context, part, &info, &m_pipeline);
        }
        if (result != EXR_ERR_SUCCESS) return result;
        if (target.channelOf.empty() && !mapChannels(target)) return EXR_ERR_INVALID_ATTR;
        m_pipeline.decoding_user_data = &target;
        target.isSplit = false;
        if (fresh) {
            // The library chooses how to read and decompress by where the pixels go; `unpack` does that part, and
            // strides with gaps keep the library from reading straight into a place that does not exist.
            for (std::int16_t i = 0; i < m_pipeline.channel_count; ++i) {
                exr_coding_channel_info_t& channel = m_pipeline.channels[i];
                channel.decode_to_ptr = target.part->planes.front().pixels.data();
                channel.user_bytes_per_element = channel.bytes_per_element;
                channel.user_data_type = channel.data_type;
                channel.user_pixel_stride = channel.bytes_per_element * 2;
                channel.user_line_stride = channel.user_pixel_stride;
            }
            result = exr_decoding_choose_default_routines(m_context, part, &m_pipeline);
            if (result != EXR_ERR_SUCCESS) return result;
        }
        m_pipeline.unpack_and_convert_fn = unpack;
        if (info.compression == EXR_COMPRESSION_ZIP || info.compression == EXR_COMPRESSION_ZIPS)
            m_pipeline.decompress_fn = inflateZip;
        return exr_decoding_run(m_context, part, &m_pipeline);
    }

private:
    bool mapChannels(Target& target) const {
        for (std::int16_t i = 0; i < m_pipeline.channel_count; ++i) {
            const Channel* channel = target.part->findChannel(m_pipeline.channels[i].channel_name);
            if (channel == nullptr) return false;
            target.channelOf.push_back(static_cast<std::size_t>(channel - target.part->channels.data()));
        }
        return true;
    }
    void reset() {
        if (m_part >= 0) exr_decoding_destroy(m_context, &m_pipeline);
        m_pipeline = exr_decode_pipeline_t{};
        m_part = -1;
    }

    exr_context_t m_context;
    exr_decode_pipeline_t m_pipeline{};
    int m_part = -1;
};

/// PIZ is twice as fast in the C++ library; DWA is only there; B44's blocks that are stored as they are go wrong in the
/// C one.
bool isForImf(const Part& part) {
    return part.compression == "piz" || part.compression.starts_with("b44") || part.compression.starts_with("dwa");
}

std::vector<Block> blocksOf(const Part& part, std::size_t index, std::int32_t linesPerBlock) {
    std::vector<Block> blocks;
    const Window& whole = part.dataWindow;
    const std::int64_t width = part.tileWidth != 0 ? std::int64_t{part.tileWidth} : whole.width();
    const std::int64_t height = part.tileWidth != 0 ? std::int64_t{part.tileHeight} : std::int64_t{linesPerBlock};
    for (std::int64_t y = whole.minY; y <= whole.maxY; y += height) {
        for (std::int64_t x = whole.minX; x <= whole.maxX; x += width) {
            Block block;
            block.part = index;
            block.window = {static_cast<std::int32_t>(x), static_cast<std::int32_t>(y),
                            static_cast<std::int32_t>(std::min<std::int64_t>(x + width - 1, whole.maxX)),
                            static_cast<std::int32_t>(std::min<std::int64_t>(y + height - 1, whole.maxY))};
            block.tileX = static_cast<std::int32_t>((x - whole.minX) / width);
            block.tileY = static_cast<std::int32_t>((y - whole.minY) / height);
            blocks.push_back(block);
        }
    }
    return blocks;
}

} // namespace

ExrReader::ExrReader(const std::string& path, const Limits& limits)
    : m_file(path), m_header(readExrHeader(m_file, limits)) {}

Frame ExrReader::readHeader(std::int64_t) {
    Frame frame;
    frame.format = "exr";
    frame.parts = m_header.parts;
    return frame;
}

void ExrReader::readPixels(Frame& frame, unsigned threads, std::int64_t) {
    const ExrContext context(m_file);
    frame.assignHeader(readHeader(0));

    // The chunk tables tell an incomplete file at once: before memory is taken, and with a clear text.
    std::vector<Block> blocks;
    std::uint64_t table = m_header.end;
    for (std::size_t i = 0; i < frame.parts.size(); ++i) {
        std::int32_t chunks = 0;
        std::int32_t lines = 1;
        exr_result_t result = exr_get_chunk_count(context.get(), static_cast<int>(i), &chunks);
        if (result == EXR_ERR_SUCCESS && frame.parts[i].tileWidth == 0)
            result = exr_get_scanlines_per_chunk(context.get(), static_cast<int>(i), &lines);
        if (result != EXR_ERR_SUCCESS || chunks < 1 || lines < 1)
            throw ImageError(m_file.path(), "the header is damaged (" + context.errorText(result) + ")");
        const std::uint64_t bytes = static_cast<std::uint64_t>(chunks) * 8;
        if (table + bytes > m_file.size()) throw ImageError(m_file.path(), incomplete);
        std::vector<std::uint64_t> offsets(static_cast<std::size_t>(chunks));
        m_file.read(offsets.data(), static_cast<std::size_t>(bytes), table);
        for (const std::uint64_t offset : offsets)
            if (offset == 0 || offset >= m_file.size()) throw ImageError(m_file.path(), incomplete);
        // The block that lies last: its size stands before its bytes, behind its coordinates.
        const std::uint64_t last = *std::max_element(offsets.begin(), offsets.end());
        const std::uint64_t sizeAt = last + (m_header.multiPart ? 4 : 0) + (frame.parts[i].tileWidth != 0 ? 16 : 4);
        std::uint32_t size = 0;
        if (m_file.read(&size, sizeof size, sizeAt) < sizeof size || sizeAt + sizeof size + size > m_file.size())
            throw ImageError(m_file.path(), incomplete);
        table += bytes;
        const std::vector<Block> own = blocksOf(frame.parts[i], i, lines);
        blocks.insert(blocks.end(), own.begin(), own.end());
    }

    try {
        for (Part& part : frame.parts) part.allocatePixels();
    } catch (const std::bad_alloc&) {
        throw ImageError(m_file.path(), "not enough memory for its pixels");
    }
    const auto damaged = [this](const Block& block, const std::string& cause) {
        return ImageError(m_file.path(), "the block at line " + std::to_string(block.window.minY) + " is damaged (" +
                                             cause + "); copy or render the file again");
    };
    parallelFor(threads, blocks.size(), [&](WorkQueue& queue) {
        std::unique_ptr<ImfBlockReader> imf;
        Pipeline pipeline(context.get());
        ZipBlockDecompressor decompressor;
        Target target;
        target.decompressor = &decompressor;
        for (std::size_t i = 0; queue.next(i);) {
            const Block& block = blocks[i];
            Part* const part = &frame.parts[block.part];
            if (target.part != part) target.channelOf.clear();
            target.part = part;
            target.block = &block;
            const int partIndex = static_cast<int>(block.part);
            if (isForImf(*part)) {
                try {
                    if (!imf) imf = std::make_unique<ImfBlockReader>(m_file);
                    if (part->tileWidth != 0)
                        imf->readTile(partIndex, *part, block.tileX, block.tileY);
                    else
                        imf->readLines(partIndex, *part, block.window);
                    continue;
                } catch (const std::exception& error) {
                    throw damaged(block, error.what());
                }
            }
            exr_chunk_info_t info{};
            exr_result_t result =
                part->tileWidth != 0
                    ? exr_read_tile_chunk_info(context.get(), partIndex, block.tileX, block.tileY, 0, 0, &info)
                    : exr_read_scanline_chunk_info(context.get(), partIndex, block.window.minY, &info);
            if (result == EXR_ERR_SUCCESS) result = pipeline.decode(info, partIndex, target);
            if (result == EXR_ERR_SUCCESS) continue;
            if (context.metEnd()) throw ImageError(m_file.path(), incomplete);
            throw damaged(block, context.errorText(result));
        }
    });
}

} // namespace Image
