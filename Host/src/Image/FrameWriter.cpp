#include "Image/FrameWriter.h"

#include "Image/Exr/ExrWriter.h"
#include "Image/FileExtension.h"
#include "Image/FrameReader.h"
#include "Image/ImageModule.h"

namespace HostImage {

void writeFrame(const std::string& path, const Frame& frame, const WriteOptions& options) {
    if (fileExtension(path) == "exr") {
        writeExr(path, frame, options);
        return;
    }
    if (isMovie(path))
        throw ImageError(path,
                         "cannot be written: movies are only read; choose an image sequence such as name.%04d.exr");
    const auto write = reinterpret_cast<WriteModuleFrame>(moduleFunction(path, "StillsModule", "orvexWriteFrame"));
    write(path, frame, options);
}

} // namespace HostImage
