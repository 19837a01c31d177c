#include "Render/RenderOptions.h"

#include "Files.h"

namespace Tools {

bool RenderOptions::isOutputWithDataWindow() const { return Image::fileExtension(output.string()) == "exr"; }

} // namespace Tools
