#pragma once

#include <string>

namespace Host {

/// A new folder for temporary files that only this user can enter; removed, with what is in it, at the end.
class PrivateFolder {
public:
    /// Makes a folder whose name begins so, in TMPDIR, /tmp, /var/tmp or XDG_RUNTIME_DIR, whichever takes it first.
    /// Throws Failure (Environment) if none does.
    explicit PrivateFolder(const std::string& name);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace Host
