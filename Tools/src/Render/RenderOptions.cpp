#include "Render/RenderOptions.h"

#include "Files.h"
#include "Frame.h"

namespace Tools {

bool RenderOptions::isOutputWithDataWindow() const { return Image::fileExtension(output.string()) == "exr"; }

std::size_t RenderOptions::partCount(const Image::Frame& frame) const { return renderMap ? 1 : frame.parts.size(); }

} // namespace Tools
