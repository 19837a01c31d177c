#pragma once

#include "DDImage/Box.h"
#include "DDImage/Format.h"
#include "DDImage/GeneralInfo.h"

namespace DD {
namespace Image {

/// An image's data window, which is this box, and its display window, the format. Formats are stored by value.
class Info2D : public GeneralInfo, public Box {
public:
    const Box& box() const { return *this; }
    void setBox(const Box& box) { set(box); }

    const Format& format() const { return m_format; }
    void format(const Format& format) { m_format = format; }
    const Format& full_size_format() const { return m_fullSizeFormat; }
    void full_size_format(const Format& format) { m_fullSizeFormat = format; }

private:
    Format m_format;
    Format m_fullSizeFormat;
};

} // namespace Image
} // namespace DD
