#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Support {

/// A fresh folder that any user may read; removed with its contents at the end.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "orvex-test-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder at " + pattern);
        chmod(pattern.c_str(), 0755);
        m_path = std::filesystem::canonical(pattern);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Path of an entry, whether it exists or not; "" is the folder itself.
    std::string path(const std::string& entry = "") const { return entry.empty() ? m_path : (m_path / entry); }

    std::string makeFolder(const std::string& entry) const {
        std::filesystem::create_directories(m_path / entry);
        return path(entry);
    }

    /// Writes a file, making the folders it needs.
    std::string write(const std::string& entry, const std::string& text = "x") const {
        std::filesystem::create_directories((m_path / entry).parent_path());
        std::ofstream(m_path / entry, std::ios::binary) << text;
        return path(entry);
    }

    /// What a file holds.
    std::string text(const std::string& entry) const {
        std::ifstream stream(path(entry), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    std::filesystem::path m_path;
};

} // namespace Support
