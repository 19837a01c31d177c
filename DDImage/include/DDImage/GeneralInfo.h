#pragma once

namespace DD {
namespace Image {

/// First and last frame of the clip that an op produces; a reader sets them during validation.
class GeneralInfo {
public:
    int first_frame() const { return m_firstFrame; }
    int firstFrame() const { return m_firstFrame; }
    int last_frame() const { return m_lastFrame; }
    int lastFrame() const { return m_lastFrame; }
    void first_frame(int frame) { m_firstFrame = frame; }
    void setFirstFrame(int frame) { m_firstFrame = frame; }
    void last_frame(int frame) { m_lastFrame = frame; }
    void setLastFrame(int frame) { m_lastFrame = frame; }

private:
    int m_firstFrame = 1;
    int m_lastFrame = 1;
};

} // namespace Image
} // namespace DD
