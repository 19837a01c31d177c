#include "Image/FrameWriter.h"

#include "Image/Exr/ExrWriter.h"
#include "Image/FileExtension.h"
#include "Image/FrameReader.h"
#include "Image/ImageModule.h"
#include "Image/StillFormat.h"

namespace HostImage {

void checkOutputName(const std::string& path) {
    if (isMovie(path))
        throw ImageError(path,
                         "cannot be written: movies are only read; choose an image sequence such as name.%04d.exr");
    if (fileExtension(path) != "exr") StillFormat::of(path);
}

void checkFrame(const std::string& path, const Frame& frame, const WriteOptions& options) {
    checkOutputName(path);
    if (fileExtension(path) != "exr") StillFormat::of(path).check(path, frame, options);
}

void writeFrame(const std::string& path, const Frame& frame, const WriteOptions& options) {
    checkFrame(path, frame, options);
    if (fileExtension(path) == "exr") {
        writeExr(path, frame, options);
        return;
    }
    const auto write = reinterpret_cast<WriteModuleFrame>(moduleFunction(path, "StillsModule", "orvexWriteFrame"));
    write(path, frame, options);
}

} // namespace HostImage
