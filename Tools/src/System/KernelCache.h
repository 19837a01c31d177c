#pragma once

#include <functional>
#include <memory>
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

/// The folder in which the CPU driver (PoCL) keeps compiled kernels.
///
/// The driver finds no device at all when it cannot write there, and kills the whole process when that disk is full. So
/// the folder is tested before the first OpenCL call; if it is unusable, a private one is created for this run, passed
/// to the driver in POCL_CACHE_DIR, and removed at the end. A folder that the user chose with POCL_CACHE_DIR is never
/// replaced: that was a decision, and `problem` says what is wrong with it. Other drivers ignore all of this.
///
/// One object per process, made before the first thread.
class KernelCache {
public:
    /// Throws Failure (Environment) if a private folder is needed and cannot be made.
    KernelCache();
    ~KernelCache();
    KernelCache(const KernelCache&) = delete;
    KernelCache& operator=(const KernelCache&) = delete;

    /// Where compiled kernels are kept in this run.
    const std::string& folder() const { return m_folder; }
    /// Whether that folder is a private one, which disappears at the end.
    bool isPrivate() const { return m_privateFolder != nullptr; }
    /// Why the usual folder cannot be used: "Kernel cache \"…\" is not usable: …"; empty if it can be.
    const std::string& problem() const { return m_problem; }

    /// A notice about the choice for the user, a sentence or two; empty when the usual folder is used.
    std::string notice() const;

    /// The folder that the driver uses by itself: POCL_CACHE_DIR, else pocl/kcache in XDG_CACHE_HOME or in HOME's
    /// .cache, else /tmp/pocl. `variable` looks up the environment and answers null for what is not set.
    static std::string usualFolder(const std::function<const char*(const char*)>& variable);

    /// Creates the folder, writes to it, and checks that its disk has room for some kernels. Empty, or what failed.
    static std::string problemOf(const std::string& folder);

private:
    std::string m_folder;
    std::string m_problem;
    std::unique_ptr<PrivateFolder> m_privateFolder;
};

} // namespace Tools
