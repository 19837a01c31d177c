#include "Info/FileFrameSource.h"

#include <cstring>
#include <utility>

namespace Tools {

namespace {

bool copied(const std::string& text, char* buffer, unsigned long capacity) {
    if (text.size() + 1 > capacity) return false;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

} // namespace

FileFrameSource::FileFrameSource(std::string correctionFilePath, std::string clipFileName, std::uint32_t width,
                                 std::uint32_t height, std::optional<RecordingFormat> manualFormat,
                                 const std::uint32_t& frameNumber)
    : m_correctionFilePath(std::move(correctionFilePath)),
      m_clipFileName(std::move(clipFileName)),
      m_width(manualFormat ? manualFormat->clipResolutionWidth : width),
      m_height(manualFormat ? manualFormat->clipResolutionHeight : height),
      m_manualFormat(manualFormat),
      m_frameNumber(frameNumber) {}

bool FileFrameSource::shouldPerformShadingCorrection(Core::ShadingCorrectionParameter&) const { return false; }

bool FileFrameSource::shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const {
    parameter = {};
    return true;
}

bool FileFrameSource::frameMetadata(char*, unsigned long) const { return false; }

bool FileFrameSource::correctionFilePath(char* path, unsigned long capacity) const {
    return copied(m_correctionFilePath, path, capacity);
}

bool FileFrameSource::clipFileName(char* name, unsigned long capacity) const {
    return copied(m_clipFileName, name, capacity);
}

bool FileFrameSource::clipFilePath(char*, unsigned long) const { return false; }

bool FileFrameSource::frameData(Core::FrameData& frameData) const {
    frameData = {};
    frameData.frameNumber = m_frameNumber;
    frameData.width = m_width;
    frameData.height = m_height;
    return true;
}

bool FileFrameSource::recordingFormat(RecordingFormat& recordingFormat) const {
    if (m_manualFormat) recordingFormat = *m_manualFormat;
    return m_manualFormat.has_value();
}

} // namespace Tools
