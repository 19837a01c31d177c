#include "Clip/Clip.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "Clip/FrameFiles.h"
#include "ImageError.h"
#include "Movie/MovieHeader.h"
#include "Sandbox/FrameMessage.h"

namespace Tools {

Clip::Clip(const std::string& path, DecodingOptions decoding)
    : m_decoding(std::move(decoding)),
      m_files(FrameFiles::find(path)),
      m_isMovie(Image::isMovie(m_files.files.begin()->second)),
      m_searchPath(clipFilePath(m_files)),
      m_shownPath(shownClipPath(m_files)) {
    if (m_isMovie) {
        const std::string& movie = m_files.files.begin()->second;
        const std::unique_ptr<Image::FrameReader> reader = m_decoding.openReader(movie);
        m_firstHeader = reader->readHeader();
        const std::int64_t count = reader->frameCount();
        if (count > Image::FrameMessage::maxFrameCount)
            throw Image::ImageError(movie, "claims " + std::to_string(count) + " frames; it is damaged");
        for (std::int64_t frame = 1; frame <= count; ++frame) m_frames[static_cast<std::int32_t>(frame)] = movie;
    } else {
        m_frames = m_files.files;
    }
    const std::string sidecar = Image::MetadataSidecar::pathFor(path);
    if (std::filesystem::exists(sidecar)) m_sidecar.emplace(sidecar);
}

std::vector<std::int32_t> Clip::frameNumbers() const {
    std::vector<std::int32_t> numbers;
    for (const auto& [number, file] : m_frames) numbers.push_back(number);
    return numbers;
}

ClipRange Clip::range() const {
    const std::int64_t last = std::min<std::int64_t>(shownNumber(m_frames.rbegin()->first), INT32_MAX);
    return {static_cast<std::int32_t>(shownNumber(m_frames.begin()->first)), static_cast<std::int32_t>(last)};
}

std::int64_t Clip::shownNumber(std::int32_t frame) const {
    return std::int64_t{frame} - std::min(m_frames.begin()->first, 0);
}

std::int64_t Clip::indexInFile(std::int32_t frame) const { return m_isMovie ? std::int64_t{frame} - 1 : 0; }

std::optional<std::string> Clip::fileOf(std::int32_t frame) const {
    const auto file = m_frames.find(frame);
    if (file != m_frames.end()) return file->second;
    const bool isStill = m_frames.size() == 1 && !m_isMovie && !m_files.pattern.hasFrameNumber();
    return isStill ? std::optional(m_frames.begin()->second) : std::nullopt;
}

std::string Clip::path(std::int32_t frame) const {
    const std::optional<std::string> file = fileOf(frame);
    if (!file)
        throw Image::ImageError(m_files.pattern.string(), "The clip has no frame " + std::to_string(frame) + ".");
    return std::filesystem::absolute(*file).lexically_normal().string();
}

std::string Clip::shownPath(std::int32_t frame) const {
    if (!m_sidecar) return m_shownPath;
    const Image::Metadata values = m_sidecar->values(frame);
    const auto original = values.find("input/filename");
    const std::string* const name = original == values.end() ? nullptr : std::get_if<std::string>(&original->second);
    if (!name || name->empty()) return m_shownPath;
    return (std::filesystem::path(m_shownPath).parent_path() / *name).string();
}

Image::Frame Clip::readHeader(std::int32_t frame) const {
    const std::string file = path(frame);
    if (m_isMovie) return Image::movieHeader(m_firstHeader, indexInFile(frame));
    return m_decoding.openReader(file)->readHeader();
}

void Clip::read(std::int32_t frame, Image::Frame& into, unsigned int threads) const {
    m_decoding.openReader(path(frame))->readPixels(into, threads, indexInFile(frame));
}

Image::Metadata Clip::metadata(std::int32_t frame, const Image::Frame& header) const {
    Image::Metadata metadata = Image::hostMetadata(header, path(frame), shownNumber(frame));
    if (m_sidecar)
        for (const auto& [key, value] : m_sidecar->values(frame)) metadata[key] = value;
    return metadata;
}

} // namespace Tools
