#include "System/PrivateFolder.h"

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

} // namespace Tools
