#pragma once

#include <string>

namespace Tools {

/// A new folder for temporary files that only this user can enter; removed, with what is in it, at the end.
class PrivateFolder {
public:
    /// Creates a folder whose name begins with `name` in TMPDIR, /tmp, /var/tmp or XDG_RUNTIME_DIR, the first that is
    /// writable. Throws Failure (Environment) if none is.
    explicit PrivateFolder(const std::string& name);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace Tools
