#include "Core/Core.h"

#include <cstring>
#include <exception>
#include <utility>

#include "Core/CorePrivate.h"
#include "Exception/Assert.h"
#include "Exception/Exception.h"
#include "MetadataDatabase/CsvStringBasedMetadataDatabase.h"

namespace Core {

namespace {

/// Copies a text with its terminating zero; false, with the buffer untouched, when it does not fit.
bool copied(const std::string& text, char* buffer, unsigned long capacity) {
    if (text.size() + 1 > capacity) return false;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

bool metadataKeyForMetadataKind(MetadataDatabase::MetadataKind kind, const char* c_cameraManufacturer,
                                const char* c_containerFormat, char* c_key, unsigned long keyCapacity) {
    ORVEX_ASSERT(c_cameraManufacturer);
    ORVEX_ASSERT(c_containerFormat);
    ORVEX_ASSERT(c_key);
    ORVEX_ASSERT(keyCapacity);
    try {
        std::string key;
        MetadataDatabase::CsvStringBasedMetadataDatabase::sharedInstance().keyForKind(kind, c_cameraManufacturer,
                                                                                      c_containerFormat, key);
        return copied(key, c_key, keyCapacity);
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

Core::Core(std::unique_ptr<CoreDataSource> dataSource)
    : m_private(std::make_unique<CorePrivate>(std::move(dataSource))) {}

Core::~Core() = default;

template <typename Operation>
bool Core::perform(Operation operation) {
    // Forgotten afterwards too: the data source may have called back, and failed with that.
    m_errors.forget();
    try {
        operation();
    } catch (const Exception& exception) {
        m_errors.keep({exception.what(), exception.detailedDescription()});
        return false;
    } catch (...) {
        m_errors.forget();
        throw;
    }
    m_errors.forget();
    return true;
}

bool Core::frameSize(unsigned int& width, unsigned int& height) {
    return perform([&] { m_private->frameSize(width, height); });
}

bool Core::render(const float* input, float* output, unsigned long size, const std::function<bool()>& isAborted) {
    return perform([&] { m_private->render(input, output, size, isAborted); });
}

bool Core::recordingFormat(RecordingFormatDatabase::RecordingFormat& recordingFormat) {
    return perform([&] { recordingFormat = m_private->recordingFormat(); });
}

bool Core::briefErrorDescription(char* description, unsigned long capacity) const {
    ORVEX_ASSERT(description);
    ORVEX_ASSERT(capacity);
    const ErrorTexts::Texts* const texts = m_errors.texts();
    return texts && copied(texts->brief, description, capacity);
}

bool Core::detailedErrorDescription(char* description, unsigned long capacity) const {
    ORVEX_ASSERT(description);
    ORVEX_ASSERT(capacity);
    const ErrorTexts::Texts* const texts = m_errors.texts();
    return texts && copied(texts->detailed, description, capacity);
}

bool Core::metadataKeyForClipFileName(const char* c_cameraManufacturer, const char* c_containerFormat, char* c_key,
                                      unsigned long keyCapacity) {
    return metadataKeyForMetadataKind(MetadataDatabase::MetadataKind::ClipFileName, c_cameraManufacturer,
                                      c_containerFormat, c_key, keyCapacity);
}

bool Core::metadataKeyForTimecode(const char* c_cameraManufacturer, const char* c_containerFormat, char* c_key,
                                  unsigned long keyCapacity) {
    return metadataKeyForMetadataKind(MetadataDatabase::MetadataKind::Timecode, c_cameraManufacturer, c_containerFormat,
                                      c_key, keyCapacity);
}

} // namespace Core
