#include "System/KernelCache.h"

#include <fmt/format.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "Report/Failure.h"

namespace Tools {

PrivateFolder::PrivateFolder(const std::string& name) {
    const char* const places[] = {std::getenv("TMPDIR"), "/tmp", "/var/tmp", std::getenv("XDG_RUNTIME_DIR")};
    for (const char* const place : places) {
        if (!place || !*place) continue;
        m_path = std::string(place) + '/' + name + "-XXXXXX";
        if (mkdtemp(m_path.data())) return;
    }
    throw Failure(Failure::Kind::Environment, "No folder for temporary files is writable; set TMPDIR to one that is.");
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

namespace {

namespace fs = std::filesystem;

/// Kernels of this program take about 1 MiB; below this a disk is as good as full.
constexpr unsigned long long neededBytes = 16ull << 20;

std::string messageOf(int error) { return std::generic_category().message(error); }

} // namespace

KernelCache::KernelCache() : m_folder(usualFolder([](const char* name) { return std::getenv(name); })) {
    const std::string reason = problemOf(m_folder);
    if (reason.empty()) return;
    m_problem = fmt::format("Kernel cache \"{}\" is not usable: {}.", m_folder, reason);
    if (std::getenv("POCL_CACHE_DIR")) return;
    m_privateFolder = std::make_unique<PrivateFolder>("lenscorrect-kernels");
    m_folder = m_privateFolder->path();
    setenv("POCL_CACHE_DIR", m_folder.c_str(), 1);
}

KernelCache::~KernelCache() = default;

std::string KernelCache::notice() const {
    if (m_problem.empty()) return {};
    if (isPrivate()) return fmt::format("{} This run uses a private one and takes longer to start.", m_problem);
    return fmt::format("{} Set POCL_CACHE_DIR to a writable folder.", m_problem);
}

std::string KernelCache::usualFolder(const std::function<const char*(const char*)>& variable) {
    if (const char* const named = variable("POCL_CACHE_DIR")) return named;
    if (const char* const cache = variable("XDG_CACHE_HOME"); cache && *cache)
        return std::string(cache) + "/pocl/kcache";
    if (const char* const home = variable("HOME")) return std::string(home) + "/.cache/pocl/kcache";
    return "/tmp/pocl";
}

std::string KernelCache::problemOf(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) return messageOf(error.value());
    // The user's rights alone do not tell: the file system may be mounted read-only.
    std::string probe = folder + "/lenscorrect-XXXXXX";
    const int file = mkstemp(probe.data());
    if (file < 0) return messageOf(errno);
    close(file);
    unlink(probe.c_str());
    struct statvfs status = {};
    if (statvfs(folder.c_str(), &status) == 0 && status.f_frsize * status.f_bavail < neededBytes) {
        return "its disk is full";
    }
    return {};
}

} // namespace Tools
