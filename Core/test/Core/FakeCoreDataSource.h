#pragma once

#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Core/Core.h"
#include "Core/CoreDataSource.h"

namespace Support {

/// What a host would know about a frame; what is not given is not available.
struct HostFrame {
    std::optional<std::string> correctionFilePath;
    std::optional<std::string> clipFileName;
    std::optional<std::string> frameMetadata;
    std::optional<std::string> clipFilePath;
    std::optional<Core::FrameData> frameData;
    std::optional<RecordingFormatDatabase::RecordingFormat> recordingFormat;
    std::optional<Core::ShadingCorrectionParameter> shading;
    std::optional<Core::DistortionCorrectionParameter> distortion;
    mutable std::vector<std::string> questions; ///< asked so far, in order
};

/// Frame data of a size; without timecode, at the correction file's rate.
inline Core::FrameData frameOf(std::uint32_t width, std::uint32_t height, std::uint32_t frameNumber = 0) {
    Core::FrameData frame;
    frame.width = width;
    frame.height = height;
    frame.frameNumber = frameNumber;
    return frame;
}

/// Answers from a host frame that the test keeps and may change between calls.
class FakeCoreDataSource : public Core::CoreDataSource {
public:
    explicit FakeCoreDataSource(const HostFrame& frame) : m_frame(frame) {}

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override {
        return answer("shading", m_frame.shading, parameter);
    }
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override {
        return answer("distortion", m_frame.distortion, parameter);
    }
    bool frameMetadata(char* metadata, unsigned long capacity) const override {
        return answer("frameMetadata", m_frame.frameMetadata, metadata, capacity);
    }
    bool correctionFilePath(char* path, unsigned long capacity) const override {
        return answer("correctionFilePath", m_frame.correctionFilePath, path, capacity);
    }
    bool clipFileName(char* name, unsigned long capacity) const override {
        return answer("clipFileName", m_frame.clipFileName, name, capacity);
    }
    bool clipFilePath(char* path, unsigned long capacity) const override {
        return answer("clipFilePath", m_frame.clipFilePath, path, capacity);
    }
    bool frameData(Core::FrameData& frameData) const override {
        return answer("frameData", m_frame.frameData, frameData);
    }
    bool recordingFormat(RecordingFormatDatabase::RecordingFormat& recordingFormat) const override {
        return answer("recordingFormat", m_frame.recordingFormat, recordingFormat);
    }

private:
    template <typename Value>
    bool answer(const char* question, const std::optional<Value>& known, Value& value) const {
        note(question);
        if (known) value = *known;
        return known.has_value();
    }

    bool answer(const char* question, const std::optional<std::string>& known, char* text,
                unsigned long capacity) const {
        note(question + (" " + std::to_string(capacity)));
        if (!known || known->size() + 1 > capacity) return false;
        std::memcpy(text, known->c_str(), known->size() + 1);
        return true;
    }

    void note(const std::string& question) const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_frame.questions.push_back(question);
    }

    const HostFrame& m_frame;
    mutable std::mutex m_mutex;
};

/// The last failure's texts, or "no error".
inline std::string briefErrorOf(const Core::Core& core) {
    char text[4096];
    return core.briefErrorDescription(text, sizeof(text)) ? text : "no error";
}

inline std::string detailedErrorOf(const Core::Core& core) {
    char text[16384];
    return core.detailedErrorDescription(text, sizeof(text)) ? text : "no error";
}

} // namespace Support
