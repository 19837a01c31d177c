#include "Exr/ExrContext.h"

#include "ImageError.h"

namespace Image {

namespace {

exr_context_initializer_t initializer() {
    exr_context_initializer_t values{};
    values.size = sizeof values;
    values.zip_level = -2;
    values.dwa_quality = -1.0f;
    // A file without all its blocks is an error; the library would search the file for what is left of them.
    values.flags = EXR_CONTEXT_FLAG_DISABLE_CHUNK_RECONSTRUCTION;
    return values;
}

} // namespace

ExrContext::ExrContext(const InputFile& file) : m_path(file.path()), m_file(&file) {
    exr_context_initializer_t values = initializer();
    values.error_handler_fn = onError;
    values.user_data = this;
    values.read_fn = read;
    values.size_fn = size;
    const exr_result_t result = exr_start_read(&m_context, m_path.c_str(), &values);
    if (result != EXR_ERR_SUCCESS) throw ImageError(m_path, "the header is damaged (" + errorText(result) + ")");
}

ExrContext::ExrContext(const std::string& path) : m_path(path) {
    exr_context_initializer_t values = initializer();
    values.error_handler_fn = ignoreError;
    values.write_fn = discard;
    exr_result_t result = exr_start_write(&m_context, m_path.c_str(), EXR_WRITE_FILE_DIRECTLY, &values);
    if (result == EXR_ERR_SUCCESS) result = exr_set_longname_support(m_context, 1);
    if (result != EXR_ERR_SUCCESS) throw ImageError(m_path, "cannot be written: " + errorText(result));
}

// The context of a write reports errors with its lock held, which any question to it would take again: the results
// alone have to tell.
void ExrContext::ignoreError(exr_const_context_t, exr_result_t, const char*) {}

ExrContext::~ExrContext() {
    if (m_context != nullptr) exr_finish(&m_context);
}

std::string ExrContext::errorText(exr_result_t result) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_error.empty() ? exr_get_default_error_message(result) : m_error;
}

bool ExrContext::metEnd() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_metEnd;
}

void ExrContext::onError(exr_const_context_t context, exr_result_t, const char* message) {
    void* data = nullptr;
    if (context == nullptr || exr_get_user_data(context, &data) != EXR_ERR_SUCCESS || data == nullptr) return;
    ExrContext& self = *static_cast<ExrContext*>(data);
    std::string text = message;
    // The library puts the file's name first; ours does so too.
    const std::string prefix = self.m_path + ": ";
    if (text.starts_with(prefix)) text.erase(0, prefix.size());
    if (text.starts_with("'" + self.m_path + "': ")) text.erase(0, prefix.size() + 2);
    const std::lock_guard<std::mutex> lock(self.m_mutex);
    if (self.m_error.empty()) self.m_error = text;
}

std::int64_t ExrContext::read(exr_const_context_t, void* self, void* buffer, std::uint64_t size, std::uint64_t offset,
                              exr_stream_error_func_ptr_t) {
    ExrContext& context = *static_cast<ExrContext*>(self);
    try {
        const std::size_t count = context.m_file->read(buffer, static_cast<std::size_t>(size), offset);
        if (count < size) {
            const std::lock_guard<std::mutex> lock(context.m_mutex);
            context.m_metEnd = true;
        }
        return static_cast<std::int64_t>(count);
    } catch (const std::exception& error) {
        const std::lock_guard<std::mutex> lock(context.m_mutex);
        if (context.m_error.empty()) context.m_error = error.what();
        return -1;
    }
}

std::int64_t ExrContext::size(exr_const_context_t, void* self) {
    return static_cast<std::int64_t>(static_cast<ExrContext*>(self)->m_file->size());
}

std::int64_t ExrContext::discard(exr_const_context_t, void*, const void*, std::uint64_t size, std::uint64_t,
                                 exr_stream_error_func_ptr_t) {
    return static_cast<std::int64_t>(size);
}

} // namespace Image
