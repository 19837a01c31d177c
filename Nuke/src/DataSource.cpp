#include "DataSource.h"

#include <cstring>

#include <boost/filesystem/path.hpp>

#include "DataSourceHelper.h"
#include "Exception/Assert.h"
#include "FrameSizing.h"
#include "LensCorrection.h"

namespace {

template <typename Companion>
bool copyText(char* buffer, unsigned long capacity, Companion companion) {
    std::string text;
    if (!companion(text) || text.length() + 1 > capacity) return false;
    std::memcpy(buffer, text.c_str(), text.length() + 1);
    return true;
}

} // namespace

DataSource::DataSource(LensCorrection* op) : m_op(op) {}

bool DataSource::frameMetadata(char* metadata, unsigned long capacity) const {
    return copyText(metadata, capacity, [this](std::string& text) { return frameMetadata(text); });
}

bool DataSource::correctionFilePath(char* path, unsigned long capacity) const {
    return copyText(path, capacity, [this](std::string& text) { return correctionFilePath(text); });
}

bool DataSource::clipFileName(char* name, unsigned long capacity) const {
    return copyText(name, capacity, [this](std::string& text) { return clipFileName(text); });
}

bool DataSource::clipFilePath(char* path, unsigned long capacity) const {
    return copyText(path, capacity, [this](std::string& text) { return clipFilePath(text); });
}

bool DataSource::frameMetadata(std::string& metadata) const {
    return DataSourceHelper::jsonMetadataString(m_op, metadata);
}

bool DataSource::correctionFilePath(std::string& path) const {
    const std::string selectedPath = m_op->correctionFilePath();
    if (selectedPath.empty()) return false;
    path = selectedPath;
    return true;
}

bool DataSource::clipFileName(std::string& name) const {
    std::string path;
    if (!clipFilePath(path)) return false;
    const std::string fileName = boost::filesystem::path(path).filename().string();
    if (fileName.empty()) return false;
    name = fileName;
    return true;
}

bool DataSource::clipFilePath(std::string& path) const { return DataSourceHelper::clipFilePath(m_op, path); }

bool DataSource::frameData(Core::FrameData& frameData) const {
    unsigned int frameNumber = 0;
    std::string timecode;
    if (!DataSourceHelper::frameNumberAndTimecode(m_op, frameNumber, timecode)) return false;
    if (timecode.length() >= sizeof frameData.timecode) return false;

    const float overscanInPercent = overscan();
    const DD::Image::Box box = m_op->getOutputBox();
    frameData.frameNumber = frameNumber;
    frameData.frameRate = 0.0f; // counted at the correction file's own rate
    std::memcpy(frameData.timecode, timecode.c_str(), timecode.length() + 1);
    frameData.width = static_cast<std::uint32_t>(box.r() - box.x());
    frameData.height = static_cast<std::uint32_t>(box.t() - box.y());
    frameData.overscan = overscanInPercent;
    return true;
}

float DataSource::overscan() const {
    FrameSizing::Size recorded;
    switch (m_op->overscanLocation()) {
        case LensCorrection::BoundingBox:
            recorded = FrameSizing::sizeOf(m_op->format());
            break;
        case LensCorrection::Format:
            recorded =
                FrameSizing::withoutOverscan(FrameSizing::sizeOf(m_op->imageInput()->format()), m_op->overscanAmount());
            break;
        default:
            ORVEX_ASSERT(false);
    }
    return FrameSizing::overscan({m_op->frameWidth(), m_op->frameHeight()}, recorded);
}

bool DataSource::recordingFormat(RecordingFormatDatabase::RecordingFormat& recordingFormat) const {
    if (!m_op->isRecordingFormatManuallySelected()) return false;
    recordingFormat.imageAreaWidth = m_op->imageAreaWidth();
    recordingFormat.imageAreaHeight = m_op->imageAreaHeight();
    recordingFormat.clipResolutionWidth = static_cast<std::uint32_t>(m_op->clipResolutionWidth());
    recordingFormat.clipResolutionHeight = static_cast<std::uint32_t>(m_op->clipResolutionHeight());
    recordingFormat.imageRadius = m_op->imageDiameter() / 2.0f;
    return true;
}
