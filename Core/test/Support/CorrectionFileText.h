#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace Support {

/// Writes the text of a correction file: complete and valid as made (version 3, no frames), then changed step by step.
class CorrectionFileText {
public:
    std::string versionLine = "# OLCF Version 3";
    std::string headerStart = "HEADER_START";
    std::string headerEnd = "HEADER_END";
    std::string titleLine = "frame;heights;shading;radialDistortion;focus;iris;zoom;focalLength;entrancePupil;timecode";
    std::string lineEnd = "\n";
    std::vector<std::string> frameLines;

    /// Sets the value of a header key, adding the entry if it is new.
    CorrectionFileText& with(const std::string& key, const std::string& value) {
        const auto entry = find(key);
        if (entry != m_entries.end()) {
            entry->second = value;
        } else {
            m_entries.emplace_back(key, value);
        }
        return *this;
    }

    CorrectionFileText& without(const std::string& key) {
        m_entries.erase(find(key));
        return *this;
    }

    /// A header line as it stands, after the entries.
    CorrectionFileText& withHeaderLine(const std::string& line) {
        m_headerLines.push_back(line);
        return *this;
    }

    CorrectionFileText& withVersionLine(const std::string& line) {
        versionLine = line;
        return *this;
    }

    CorrectionFileText& withFrameLine(const std::string& line) {
        frameLines.push_back(line);
        return *this;
    }

    /// A valid version 3 frame line.
    CorrectionFileText& withFrame(int frameNumber, const std::string& timecode) {
        return withFrameLine(std::to_string(frameNumber) +
                             ";0,3,6,9,12,15,18;100,99.5,98,96,93,89,84;0,-0.1,-0.4,-0.9,-1.6,-2.5,-3.6;;;;;;" +
                             timecode);
    }

    std::string string() const {
        std::string text = versionLine + lineEnd + headerStart + lineEnd;
        for (const auto& [key, value] : m_entries) text += key + ":=" + value + lineEnd;
        for (const std::string& line : m_headerLines) text += line + lineEnd;
        text += headerEnd + lineEnd + titleLine + lineEnd;
        for (const std::string& line : frameLines) text += line + lineEnd;
        return text;
    }

private:
    using Entries = std::vector<std::pair<std::string, std::string>>;

    Entries::iterator find(const std::string& key) {
        return std::find_if(m_entries.begin(), m_entries.end(), [&](const auto& entry) { return entry.first == key; });
    }

    Entries m_entries = {{"lensManufacturer", "Lens Maker"},
                         {"lensTypeName", "Prime 40"},
                         {"lensSerialNumber", "0815"},
                         {"lensMinFocalLength", "40"},
                         {"lensMaxFocalLength", "41"},
                         {"cameraManufacturer", "Camera Maker"},
                         {"cameraModel", "Model One"},
                         {"sensorWidth", "36.7"},
                         {"clipName", "A001C002"},
                         {"videoFileName", "A001C002.mov"},
                         {"clipDurationFrames", "100"},
                         {"clipWidth", "4096"},
                         {"clipHeight", "2160"},
                         {"tcFps", "23.976"},
                         {"tcDrop", "0"},
                         {"enableLensShadingCorrection", "1"},
                         {"shadingGamma", "2.2"},
                         {"enableLensDistortionCorrection", "1"},
                         {"distortionZoom", "1.05"}};
    std::vector<std::string> m_headerLines;
};

} // namespace Support
