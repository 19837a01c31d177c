#include "FrameWriter.h"

#include "Exr/ExrWriter.h"
#include "Files.h"
#include "FrameReader.h"
#include "ImageModule.h"
#include "StillFormat.h"

namespace Image {

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

PixelType storedType(const std::string& path, PixelType type, const WriteOptions& options) {
    checkOutputName(path);
    return fileExtension(path) == "exr" ? exrStoredType(path, type, options)
                                        : StillFormat::of(path).stored(type, options);
}

void checkPixels(const std::string& path, const Frame& frame) {
    for (const Part& part : frame.parts)
        for (const Plane& plane : part.planes)
            if (plane.pixels.size() < plane.rowBytes() * plane.height)
                throw ImageError(path, "cannot be written: a part's pixels do not fill its data window");
}

void writeFrame(const std::string& path, const Frame& frame, const WriteOptions& options) {
    checkFrame(path, frame, options);
    checkPixels(path, frame);
    if (fileExtension(path) == "exr") {
        writeExr(path, frame, options);
        return;
    }
    MemoryFile file;
    encodeStill(path, frame, options, file);
    storeFile(path, file, options);
}

void encodeStill(const std::string& path, const Frame& frame, const WriteOptions& options, MemoryFile& file) {
    const auto encode = reinterpret_cast<EncodeModuleFrame>(moduleFunction(path, "StillsModule", "orvexEncodeFrame"));
    encode(path, frame, options, file);
}

void storeFile(const std::string& path, MemoryFile& bytes, const WriteOptions& options) {
    OutputFile file(path, options.makesFile);
    file.write(bytes.bytes(), bytes.size(), 0);
    file.close();
}

} // namespace Image
