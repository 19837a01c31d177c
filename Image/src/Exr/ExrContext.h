#pragma once

#include <openexr.h>

#include <cstdint>
#include <mutex>
#include <string>

#include "Files.h"

namespace Image {

/// Owns one of OpenEXR's contexts together with what it reads from and the first error text it reports.
/// The library may call back from several threads.
class ExrContext {
public:
    /// For reading `file`, which must outlive this. Throws ImageError.
    explicit ExrContext(const InputFile& file);
    /// For encoding only: what the library writes goes nowhere. Throws ImageError naming `path`.
    explicit ExrContext(const std::string& path);
    ~ExrContext();
    ExrContext(const ExrContext&) = delete;
    ExrContext& operator=(const ExrContext&) = delete;

    exr_context_t get() const { return m_context; }
    /// The library's first complaint while it reads, without the file's name; else its text for `result`.
    std::string errorText(exr_result_t result) const;
    /// Whether a read has met the end of the file.
    bool metEnd() const;

private:
    static void onError(exr_const_context_t context, exr_result_t code, const char* message);
    static void ignoreError(exr_const_context_t context, exr_result_t code, const char* message);
    static std::int64_t read(exr_const_context_t context, void* self, void* buffer, std::uint64_t size,
                             std::uint64_t offset, exr_stream_error_func_ptr_t onStreamError);
    static std::int64_t size(exr_const_context_t context, void* self);
    static std::int64_t discard(exr_const_context_t context, void* self, const void* buffer, std::uint64_t size,
                                std::uint64_t offset, exr_stream_error_func_ptr_t onStreamError);

    std::string m_path;
    const InputFile* m_file = nullptr;
    exr_context_t m_context = nullptr;
    mutable std::mutex m_mutex;
    std::string m_error;
    bool m_metEnd = false;
};

} // namespace Image
