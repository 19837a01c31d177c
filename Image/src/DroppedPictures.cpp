#include "DroppedPictures.h"

#include <algorithm>

namespace Image {

std::vector<std::string> droppedPictures(const Frame& header) {
    constexpr std::size_t levelModePlace = 8; // behind a tile's width and height
    std::vector<std::string> dropped;
    for (const Part& part : header.parts) {
        std::string what = part.text(droppedPicturesAttribute);
        const Attribute* const tiles = part.findAttribute("tiles");
        if (header.format == "exr" && tiles && tiles->value.size() > levelModePlace &&
            (static_cast<unsigned char>(tiles->value[levelModePlace]) & 0xfu) != 0)
            what = "mip levels";
        if (!what.empty() && std::find(dropped.begin(), dropped.end(), what) == dropped.end()) dropped.push_back(what);
    }
    return dropped;
}

} // namespace Image
