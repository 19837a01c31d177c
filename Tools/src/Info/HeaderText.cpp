#include "Info/HeaderText.h"

#include <fmt/format.h>

namespace Tools {

namespace {

std::string name(const std::string& maker, const std::string& product) {
    return maker + (maker.empty() || product.empty() ? "" : " ") + product;
}

} // namespace

std::string lensName(const CorrectionData::Header& header) {
    return name(header.lensManufacturer, header.lensTypeName);
}

std::string cameraName(const CorrectionData::Header& header) {
    return name(header.cameraManufacturer, header.cameraModel);
}

std::string focalLengthText(const CorrectionData::Header& header) {
    return header.lensMinFocalLength == header.lensMaxFocalLength
               ? fmt::format("{} mm", header.lensMinFocalLength)
               : fmt::format("{}-{} mm", header.lensMinFocalLength, header.lensMaxFocalLength);
}

} // namespace Tools
