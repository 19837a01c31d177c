#include "Render/OutputLayout.h"

#include <algorithm>
#include <string>

#include "Chain/PlaneTransfer.h"
#include "DroppedPictures.h"
#include "ImageError.h"
#include "Report/Failure.h"

namespace Tools {
namespace {

/// All but the pixels, whose memory stays.
void copyHeader(const Image::Part& from, Image::Part& to) {
    to.name = from.name;
    to.dataWindow = from.dataWindow;
    to.displayWindow = from.displayWindow;
    to.pixelAspectRatio = from.pixelAspectRatio;
    to.compression = from.compression;
    to.lineOrder = from.lineOrder;
    to.tileWidth = from.tileWidth;
    to.tileHeight = from.tileHeight;
    to.channels = from.channels;
    to.attributes = from.attributes;
    to.removeAttribute(Image::droppedPicturesAttribute);
}

} // namespace

Image::WriteOptions OutputLayout::writeOptions() const {
    Image::WriteOptions writing;
    writing.compression = m_options.compression;
    writing.zip = m_options.zip;
    if (m_options.renderMap && !writing.compression) writing.compression = "zip"; // a map must not lose anything
    if (m_options.pixelType)
        writing.pixelType =
            *m_options.pixelType == RenderOptions::PixelType::Half ? Image::PixelType::Half : Image::PixelType::Float;
    return writing;
}

DD::Image::Box OutputLayout::fileBox(const FramePlan& plan, const PictureShape& shape) const {
    // A distortion map's values are shares of the whole box.
    if (m_options.renderMap) return plan.box;
    DD::Image::Box box = plan.kept;
    // Without a data window, what is less than the format would be a cropped picture.
    if (!m_options.isOutputWithDataWindow()) box.merge(shape.formatBox());
    return box;
}

Image::Window OutputLayout::dataWindow(const DD::Image::Box& box, const Image::Window& displayWindow) const {
    return m_options.window == RenderOptions::Window::Box ? fileWindow(box, displayWindow) : displayWindow;
}

void OutputLayout::layOut(const Image::Part& input, const DD::Image::Box& box, Image::Part& output) const {
    copyHeader(input, output);
    output.dataWindow = dataWindow(box, input.displayWindow);
    if (m_options.renderMap) output.channels = Image::floatRgbaChannels();
    // What the nodes give is rounded and clipped once, to what the file holds.
    const Image::WriteOptions writing = writeOptions();
    for (Image::Channel& channel : output.channels)
        channel.type = Image::storedType(m_options.output.string(), channel.type, writing);
    output.layOutPlanes();
}

void OutputLayout::check(const Image::Frame& input) const {
    if (m_options.isOutputWithDataWindow()) return;
    Image::Frame output;
    output.parts.resize(m_options.partCount(input));
    for (std::size_t part = 0; part < output.parts.size(); ++part) {
        layOut(input.parts[part], {}, output.parts[part]);
        // The box is not known yet, and such a format has it as its only window.
        output.parts[part].dataWindow = output.parts[part].displayWindow;
    }
    const std::string name = m_options.output.path(1);
    try {
        Image::checkFrame(name, output, writeOptions());
    } catch (const Image::ImageError& error) {
        refuse(m_options.output.string() + std::string(error.what()).substr(name.size()));
    }
}

OutputLayout::FrameSize OutputLayout::sizeOf(const Image::Frame& input) const {
    const Image::WriteOptions writing = writeOptions();
    const std::string output = m_options.output.string();
    const auto longer = [](std::int64_t a, std::int64_t b) { return static_cast<std::uint64_t>(std::max(a, b)); };
    FrameSize size;
    for (const Image::Part& part : input.parts) {
        for (const Image::Plane& plane : part.planes) {
            const std::uint64_t bytes = plane.rowBytes() * plane.height;
            size.before += bytes;
            size.after += bytes / Image::bytesPerSample(plane.type) *
                          Image::bytesPerSample(Image::storedType(output, plane.type, writing));
        }
        // Whatever the data window is, the nodes are shown the whole format.
        size.asFloats = std::max(size.asFloats, longer(part.dataWindow.width(), part.displayWindow.width()) *
                                                    longer(part.dataWindow.height(), part.displayWindow.height()) * 4 *
                                                    sizeof(float));
    }
    return size;
}

} // namespace Tools
