#pragma once

#include "DDImage/Hash.h"

namespace DD {
namespace Image {

/// The frame and view that an op works for.
class OutputContext {
public:
    double frame() const { return m_frame; }
    void setFrame(double frame) { m_frame = frame; }
    int view() const { return m_view; }
    void setView(int view) { m_view = view; }

    void append(Hash& hash) const;

    bool operator==(const OutputContext& other) const { return m_frame == other.m_frame && m_view == other.m_view; }
    bool operator!=(const OutputContext& other) const { return !(*this == other); }

    /// Frame 0 of view 0.
    static const OutputContext& defaultContext();

private:
    double m_frame = 0;
    int m_view = 0;
};

} // namespace Image
} // namespace DD
