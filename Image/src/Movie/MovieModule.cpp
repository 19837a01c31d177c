// The module for movies: QuickTime and whatever else libavformat and libavcodec know, frame by frame.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "Files.h"
#include "FrameReader.h"
#include "ImageModule.h"
#include "Movie/MovieHeader.h"

namespace Image {

namespace {

struct FormatDeleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct CodecDeleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ScalerDeleter {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

std::string libraryText(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

template <typename Value>
std::string bytesOf(const Value& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

class MovieReader : public FrameReader {
public:
    MovieReader(const std::string& path, const Limits& limits) : m_path(path) {
        // Says what is wrong with the file itself in the words that all readers share.
        { const InputFile file(path); }
        AVFormatContext* format = nullptr;
        int result = avformat_open_input(&format, ("file:" + path).c_str(), nullptr, nullptr);
        if (result < 0) throw ImageError(path, "cannot be read as a movie (" + libraryText(result) + ")");
        m_format.reset(format);
        result = avformat_find_stream_info(format, nullptr);
        if (result < 0) throw ImageError(path, "cannot be read as a movie (" + libraryText(result) + ")");
        const AVCodec* codec = nullptr;
        const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
        if (index < 0 || codec == nullptr)
            throw ImageError(path, "has no video that this system can decode; transcode it to an EXR sequence");
        m_stream = format->streams[index];
        m_codec.reset(avcodec_alloc_context3(codec));
        m_packet.reset(av_packet_alloc());
        m_picture.reset(av_frame_alloc());
        if (!m_codec || !m_packet || !m_picture) throw ImageError(path, "not enough memory");
        avcodec_parameters_to_context(m_codec.get(), m_stream->codecpar);
        m_rate = m_stream->avg_frame_rate.num > 0 ? m_stream->avg_frame_rate : m_stream->r_frame_rate;
        if (m_rate.num <= 0 || m_rate.den <= 0) throw ImageError(path, "the movie has no frame rate");
        checkSize(limits);
        describe();
    }

    std::int64_t frameCount() const override { return m_frameCount; }

    Frame readHeader(std::int64_t index) override { return movieHeader(m_header, index); }

    void readPixels(Frame& frame, unsigned threads, std::int64_t index) override {
        if (index < 0 || index >= m_frameCount)
            throw ImageError(m_path, "has no frame " + std::to_string(index) + " (it has " +
                                         std::to_string(m_frameCount) + ", counted from 0)");
        openCodec(threads);
        decode(index);
        frame.assignHeader(readHeader(index));
        Part& part = frame.parts.front();
        try {
            part.allocatePixels();
        } catch (const std::bad_alloc&) {
            throw ImageError(m_path, "not enough memory for its pixels");
        }
        convert(part.planes.front());
    }

private:
    void checkSize(const Limits& limits) {
        const std::int64_t width = m_stream->codecpar->width;
        const std::int64_t height = m_stream->codecpar->height;
        if (width < 1 || height < 1) throw ImageError(m_path, "has no pixels");
        const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
        if (limits.maxSide != 0 && (width > limits.maxSide || height > limits.maxSide))
            throw ImageError(m_path, "the picture of " + size + " exceeds the limit of " +
                                         std::to_string(limits.maxSide) + " pixels a side");
        if (limits.maxPixels != 0 && width * height > limits.maxPixels)
            throw ImageError(m_path, "the picture of " + size + " exceeds the limit of " +
                                         std::to_string(limits.maxPixels) + " pixels");
    }

    /// Header, frame count and start of the movie.
    void describe() {
        m_start = m_stream->start_time == AV_NOPTS_VALUE ? 0 : m_stream->start_time;
        m_frameCount = m_stream->nb_frames;
        if (m_frameCount <= 0 && m_stream->duration > 0)
            m_frameCount = av_rescale_q(m_stream->duration, m_stream->time_base, av_inv_q(m_rate));
        if (m_frameCount <= 0 && m_format->duration > 0)
            m_frameCount = av_rescale_q(m_format->duration, AVRational{1, AV_TIME_BASE}, av_inv_q(m_rate));
        if (m_frameCount <= 0) throw ImageError(m_path, "the movie does not state its length");

        m_header.format = "mov";
        m_header.parts.emplace_back();
        Part& part = m_header.parts.front();
        part.dataWindow = part.displayWindow = {0, 0, m_stream->codecpar->width - 1, m_stream->codecpar->height - 1};
        const AVRational aspect = av_guess_sample_aspect_ratio(m_format.get(), m_stream, nullptr);
        if (aspect.num > 0 && aspect.den > 0) part.pixelAspectRatio = static_cast<float>(av_q2d(aspect));
        const AVPixFmtDescriptor* const pixels =
            av_pix_fmt_desc_get(static_cast<AVPixelFormat>(m_stream->codecpar->format));
        if (pixels == nullptr) throw ImageError(m_path, "has an unknown pixel format");
        const bool alpha = (pixels->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
        for (const char* const name : {"R", "G", "B", "A"}) {
            if (*name == 'A' && !alpha) continue;
            Channel channel;
            channel.name = name;
            channel.type = PixelType::UInt16;
            part.channels.push_back(channel);
        }
        part.layOutPlanes();
        part.compression = avcodec_get_name(m_stream->codecpar->codec_id);

        for (const AVDictionary* const tags : {m_format->metadata, m_stream->metadata}) {
            const AVDictionaryEntry* tag = nullptr;
            while ((tag = av_dict_get(tags, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr)
                part.setAttribute({tag->key, "string", tag->value});
        }
        part.setAttribute({"codec_name", "string", part.compression});
        const char* const transfer = av_color_transfer_name(m_stream->codecpar->color_trc);
        part.setAttribute({"color_transfer", "string", transfer == nullptr ? "unknown" : transfer});
        const std::uint32_t denominator = static_cast<std::uint32_t>(m_rate.den);
        part.setAttribute({"framesPerSecond", "rational", bytesOf(m_rate.num) + bytesOf(denominator)});

        // QuickTime keeps the timecode with a track of its own; libavformat also lends it to the pictures'.
        std::string text = part.text("timecode");
        for (unsigned i = 0; text.empty() && i < m_format->nb_streams; ++i)
            if (const AVDictionaryEntry* const tag =
                    av_dict_get(m_format->streams[i]->metadata, "timecode", nullptr, 0))
                text = tag->value;
        part.removeAttribute("timecode");
        setStartTimecode(part, text);
    }

    void openCodec(unsigned threads) {
        if (m_opened) return;
        m_codec->thread_count = static_cast<int>(std::clamp(threads, 1u, 64u));
        // Slices of one picture: frame threads would hold pictures back.
        m_codec->thread_type = FF_THREAD_SLICE;
        const int result = avcodec_open2(m_codec.get(), m_codec->codec, nullptr);
        if (result < 0) throw ImageError(m_path, "its codec could not be opened (" + libraryText(result) + ")");
        m_opened = true;
    }

    std::int64_t timeOf(std::int64_t index) const {
        return m_start + av_rescale_q(index, av_inv_q(m_rate), m_stream->time_base);
    }

    /// Which frame is shown at that time: the nearest one, times being rounded to the stream's ticks.
    std::int64_t indexAt(std::int64_t time) const {
        return av_rescale_q_rnd(time - m_start, m_stream->time_base, av_inv_q(m_rate), AV_ROUND_NEAR_INF);
    }

    /// Leaves frame `index` in m_picture.
    void decode(std::int64_t index) {
        if (index != m_next) {
            // Half a frame early, so that rounding cannot land on the frame behind.
            const int result = av_seek_frame(m_format.get(), m_stream->index, timeOf(index), AVSEEK_FLAG_BACKWARD);
            if (result < 0) fail(index, libraryText(result));
            avcodec_flush_buffers(m_codec.get());
            m_atEnd = false;
        }
        m_next = -1;
        for (;;) {
            av_frame_unref(m_picture.get());
            int result = avcodec_receive_frame(m_codec.get(), m_picture.get());
            if (result == 0) {
                const std::int64_t time = m_picture->best_effort_timestamp;
                const std::int64_t found = time == AV_NOPTS_VALUE ? index : indexAt(time);
                if (found < index) continue;
                if (found > index) fail(index, "the frame is missing in the file");
                m_next = index + 1;
                return;
            }
            if (result != AVERROR(EAGAIN)) fail(index, libraryText(result));
            if (m_atEnd) fail(index, "the file ends before this frame");
            result = av_read_frame(m_format.get(), m_packet.get());
            if (result == AVERROR_EOF) {
                m_atEnd = true;
                avcodec_send_packet(m_codec.get(), nullptr);
                continue;
            }
            if (result < 0) fail(index, libraryText(result));
            if (m_packet->stream_index == m_stream->index) result = avcodec_send_packet(m_codec.get(), m_packet.get());
            av_packet_unref(m_packet.get());
            if (result < 0 && result != AVERROR(EAGAIN)) fail(index, libraryText(result));
        }
    }

    [[noreturn]] void fail(std::int64_t index, const std::string& cause) const {
        throw ImageError(m_path, "frame " + std::to_string(index) + " could not be read (" + cause +
                                     "); the movie is incomplete or damaged, copy or render it again");
    }

    /// m_picture as 16-bit RGB(A), by the colour matrix and the range that the picture or the stream states; without a
    /// statement BT.709 from 720 lines on and BT.601 below, and the video range for YCbCr.
    void convert(Plane& plane) {
        const AVFrame& picture = *m_picture;
        const AVPixelFormat from = static_cast<AVPixelFormat>(picture.format);
        const AVPixelFormat to = plane.components == 4 ? AV_PIX_FMT_RGBA64LE : AV_PIX_FMT_RGB48LE;
        if (picture.width != static_cast<int>(plane.width) || picture.height != static_cast<int>(plane.height))
            throw ImageError(m_path, "the picture's size changes inside the movie, which is not supported");
        if (!m_scaler || m_scalerFormat != from) {
            m_scaler.reset(
                sws_getContext(picture.width, picture.height, from, picture.width, picture.height, to,
                               SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT,
                               nullptr, nullptr, nullptr));
            if (!m_scaler) throw ImageError(m_path, "has pixels that cannot be converted to RGB");
            m_scalerFormat = from;
            // The picture's own statement, else the container's.
            AVColorSpace space = picture.colorspace;
            if (space == AVCOL_SPC_UNSPECIFIED || space == AVCOL_SPC_RESERVED) space = m_stream->codecpar->color_space;
            AVColorRange range = picture.color_range;
            if (range == AVCOL_RANGE_UNSPECIFIED) range = m_stream->codecpar->color_range;
            int matrix = picture.height >= 720 ? SWS_CS_ITU709 : SWS_CS_ITU601;
            if (space != AVCOL_SPC_UNSPECIFIED && space != AVCOL_SPC_RESERVED && space != AVCOL_SPC_RGB)
                matrix = static_cast<int>(space);
            const AVPixFmtDescriptor* const pixels = av_pix_fmt_desc_get(from);
            const bool rgb = pixels != nullptr && (pixels->flags & AV_PIX_FMT_FLAG_RGB) != 0;
            const bool full = range == AVCOL_RANGE_JPEG || (rgb && range != AVCOL_RANGE_MPEG);
            constexpr int one = 1 << 16;
            sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(matrix), full ? 1 : 0,
                                     sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, one, one);
        }
        std::array<std::uint8_t*, 4> target{plane.pixels.data(), nullptr, nullptr, nullptr};
        const std::array<int, 4> stride{static_cast<int>(plane.rowBytes()), 0, 0, 0};
        sws_scale(m_scaler.get(), picture.data, picture.linesize, 0, picture.height, target.data(), stride.data());
    }

    std::string m_path;
    std::unique_ptr<AVFormatContext, FormatDeleter> m_format;
    std::unique_ptr<AVCodecContext, CodecDeleter> m_codec;
    std::unique_ptr<AVPacket, PacketDeleter> m_packet;
    std::unique_ptr<AVFrame, FrameDeleter> m_picture;
    std::unique_ptr<SwsContext, ScalerDeleter> m_scaler;
    AVPixelFormat m_scalerFormat = AV_PIX_FMT_NONE;
    AVStream* m_stream = nullptr;
    AVRational m_rate{0, 1};
    std::int64_t m_start = 0;
    std::int64_t m_frameCount = 0;
    /// The frame that decoding on without a seek gives; -1: none.
    std::int64_t m_next = -1;
    bool m_opened = false;
    bool m_atEnd = false;
    Frame m_header;
};

} // namespace

extern "C" {
__attribute__((visibility("default"))) FrameReader* orvexOpenReader(const std::string& path, const Limits& limits);
}

FrameReader* orvexOpenReader(const std::string& path, const Limits& limits) {
    av_log_set_level(AV_LOG_QUIET);
    return new MovieReader(path, limits);
}

} // namespace Image
