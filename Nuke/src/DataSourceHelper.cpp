#include "DataSourceHelper.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <typeinfo>
#include <vector>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include "Core/Core.h"
#include "DDImage/MetaData.h"
#include "Exception/Assert.h"
#include "LensCorrection.h"
#include "Text/lowerCase.h"

namespace {

constexpr unsigned long c_metadataKeyCapacity = 128;

struct ManufacturerKey {
    const char* extension;
    const char* key;
    const char* manufacturer;
};

// The keys of one extension are in ascending byte order; the first one present decides.
const ManufacturerKey c_manufacturerKeys[] = {
    {"mov", "quicktime/arri/camera/CameraClipName", "ARRI"},
    {"mov", "quicktime/red/camera/ClipFilename", "RED"},
    {"mov", "quicktime/sony/bprl/mxf/umid", "Sony"},
    {"exr", "exr/com.arri.camera.ArriUuid", "ARRI"},
    {"r3d", "r3d/reel_id_full", "RED"},
    {"mxf", "arri/camera/CameraClipName", "ARRI"},
    {"ari", "arri/camera/CameraClipName", "ARRI"},
};

bool isKeyPresent(DD::Image::Read* readNode, const char* key) {
    const DD::Image::MetaData::Bundle& metadata = readNode->fetchMetaData(key);
    return metadata.find(key) != metadata.end();
}

bool textForKey(DD::Image::Read* readNode, const char* key, std::string& text) {
    const DD::Image::MetaData::Bundle& metadata = readNode->fetchMetaData(key);
    if (metadata.find(key) == metadata.end()) return false;
    text = metadata.getString(key);
    return true;
}

bool numberForKey(DD::Image::Read* readNode, const char* key, double& number) {
    const DD::Image::MetaData::Bundle& metadata = readNode->fetchMetaData(key);
    if (metadata.find(key) == metadata.end()) return false;
    number = metadata.getDouble(key);
    return true;
}

bool isImageSequence(const std::string& extension) { return extension == "exr" || extension == "dpx"; }

bool isDigit(char character) { return character >= '0' && character <= '9'; }

} // namespace

DD::Image::Read* DataSourceHelper::readNode(LensCorrection* op) {
    ORVEX_ASSERT(op);
    if (!op->isMetadataInputConnected()) return nullptr;
    DD::Image::Op* current = op->metadataInput();
    while (current && typeid(*current) != typeid(DD::Image::Read)) {
        const int index = dynamic_cast<LensCorrection*>(current) ? LensCorrection::metadataInputIndex() : 0;
        current = index < current->inputs() ? current->input(index) : nullptr;
    }
    return dynamic_cast<DD::Image::Read*>(current);
}

bool DataSourceHelper::clipFilePath(DD::Image::Read* readNode, boost::filesystem::path& path) {
    ORVEX_ASSERT(readNode);
    const char* const fileName = readNode->filename();
    if (!fileName || !*fileName) return false;
    path = fileName;
    return true;
}

bool DataSourceHelper::readNodeAndClipFilePath(LensCorrection* op, DD::Image::Read** readNode,
                                               boost::filesystem::path& path) {
    DD::Image::Read* const reader = DataSourceHelper::readNode(op);
    if (!reader || !clipFilePath(reader, path)) return false;
    *readNode = reader;
    return true;
}

bool DataSourceHelper::clipFileExtension(const boost::filesystem::path& path, std::string& extension) {
    std::string normalized = path.extension().string();
    normalized.erase(std::remove(normalized.begin(), normalized.end(), '.'), normalized.end());
    if (normalized.empty()) return false;
    extension = Text::lowerCase(normalized);
    return true;
}

bool DataSourceHelper::cameraManufacturer(DD::Image::Read* readNode, const std::string& extension,
                                          std::string& manufacturer) {
    ORVEX_ASSERT(readNode);
    for (const ManufacturerKey& entry : c_manufacturerKeys) {
        if (extension == entry.extension && isKeyPresent(readNode, entry.key)) {
            manufacturer = entry.manufacturer;
            return true;
        }
    }
    return false;
}

bool DataSourceHelper::originalClipFileName(DD::Image::Read* readNode, boost::filesystem::path path,
                                            bool& isFormatUnknown, std::string& name) {
    ORVEX_ASSERT(readNode);
    isFormatUnknown = false;
    std::string extension;
    if (!clipFileExtension(path, extension)) return false;
    std::string manufacturer;
    char key[c_metadataKeyCapacity];
    if (!cameraManufacturer(readNode, extension, manufacturer) ||
        !Core::Core::metadataKeyForClipFileName(manufacturer.c_str(), extension.c_str(), key, sizeof key)) {
        isFormatUnknown = true;
        return false;
    }
    std::string text;
    // A value that is not a text reads as an empty one; the path without a name would be the folder's.
    if (!textForKey(readNode, key, text) || text.empty()) return false;
    name = text;
    return true;
}

bool DataSourceHelper::clipFilePath(LensCorrection* op, std::string& path) {
    DD::Image::Read* reader = nullptr;
    boost::filesystem::path readerPath;
    if (!readNodeAndClipFilePath(op, &reader, readerPath)) return false;

    bool isFormatUnknown = false;
    std::string originalName;
    const bool isOriginalNameAvailable = originalClipFileName(reader, readerPath, isFormatUnknown, originalName);
    const bool isOriginalNameAvailableForUnknownFormat = isOriginalNameAvailable && isFormatUnknown;
    ORVEX_ASSERT(!isOriginalNameAvailableForUnknownFormat);
    if (isOriginalNameAvailable) {
        path = (readerPath.parent_path() / originalName).string();
        return true;
    }
    if (!isFormatUnknown) return false;

    std::string extension;
    if (clipFileExtension(readerPath, extension) && isImageSequence(extension)) {
        std::vector<std::string> parts;
        const std::string fileName = readerPath.filename().string();
        boost::algorithm::split(parts, fileName, [](char character) { return character == '.'; });
        ORVEX_ASSERT(parts.size() >= 2);
        path = (readerPath.parent_path() / parts.front()).string();
    } else {
        path = readerPath.string();
    }
    return true;
}

bool DataSourceHelper::timecode(DD::Image::Read* readNode, const std::string& extension, bool& isFormatUnknown,
                                std::string& timecode) {
    ORVEX_ASSERT(readNode);
    isFormatUnknown = false;
    std::string manufacturer;
    char key[c_metadataKeyCapacity];
    if (!cameraManufacturer(readNode, extension, manufacturer) ||
        !Core::Core::metadataKeyForTimecode(manufacturer.c_str(), extension.c_str(), key, sizeof key)) {
        isFormatUnknown = true;
        return false;
    }
    if (!textForKey(readNode, key, timecode)) return false;
    if (extension == "r3d") modifyR3dTimecodeIfNeeded(readNode, timecode);
    return true;
}

bool DataSourceHelper::r3dFramerate(DD::Image::Read* readNode, float& framerate) {
    ORVEX_ASSERT(readNode);
    double number = 0.0;
    if (!numberForKey(readNode, "r3d/framerate", number) || !(number >= 0.0)) return false;
    framerate = static_cast<float>(number);
    return true;
}

void DataSourceHelper::modifyR3dTimecodeIfNeeded(DD::Image::Read* readNode, std::string& timecode) {
    ORVEX_ASSERT(readNode);
    float framerate = 0.0f;
    if (!r3dFramerate(readNode, framerate) || !(framerate > 30.0f) || framerate > 60.0f) return;
    const std::size_t length = timecode.length();
    if (length < 3 || !isDigit(timecode[length - 2]) || !isDigit(timecode[length - 1])) return;

    const int doubled = 2 * ((timecode[length - 2] - '0') * 10 + (timecode[length - 1] - '0'));
    const int second = timecode[length - 3] == ':' ? 1 : 0;
    timecode[length - 2] = static_cast<char>('0' + doubled / 10 % 10);
    timecode[length - 1] = static_cast<char>('0' + (doubled + second) % 10);
    std::replace(timecode.begin(), timecode.end(), '.', ':');
}

bool DataSourceHelper::frameNumber(DD::Image::Read* readNode, unsigned int& frameNumber) {
    ORVEX_ASSERT(readNode);
    double number = 0.0;
    // Written so that a value that is not a number fails too.
    if (!numberForKey(readNode, "input/frame", number) || !(number >= 0.0)) return false;
    const int firstFrame = readNode->first_frame();
    if (number < firstFrame || number > std::numeric_limits<int>::max()) return false;
    frameNumber = static_cast<unsigned int>(static_cast<std::int64_t>(number) - firstFrame);
    return true;
}

bool DataSourceHelper::frameNumberAndTimecode(LensCorrection* op, unsigned int& frameNumber, std::string& timecode) {
    DD::Image::Read* reader = nullptr;
    boost::filesystem::path path;
    std::string extension;
    if (!readNodeAndClipFilePath(op, &reader, path) || !clipFileExtension(path, extension)) return false;

    bool isFormatUnknown = false;
    std::string text;
    const bool isTimecodeAvailable = DataSourceHelper::timecode(reader, extension, isFormatUnknown, text);
    const bool isTimecodeAvailableForUnknownFormat = isTimecodeAvailable && isFormatUnknown;
    ORVEX_ASSERT(!isTimecodeAvailableForUnknownFormat);
    if (!isTimecodeAvailable && !isFormatUnknown) return false;

    unsigned int number = 0;
    if (!DataSourceHelper::frameNumber(reader, number)) return false;
    if (isTimecodeAvailable) {
        if (extension != "r3d") number = 0;
    } else if (isImageSequence(extension)) {
        if (textForKey(reader, "input/timecode", text) && !text.empty()) number = 0;
    }
    frameNumber = number;
    timecode = text;
    return true;
}

bool DataSourceHelper::jsonMetadataString(LensCorrection* op, std::string& json) {
    DD::Image::Read* reader = nullptr;
    boost::filesystem::path path;
    std::string extension;
    if (!readNodeAndClipFilePath(op, &reader, path) || !clipFileExtension(path, extension)) return false;
    return extension == "exr" && textForKey(reader, "exr/com.orvex.LensCorrection", json);
}
