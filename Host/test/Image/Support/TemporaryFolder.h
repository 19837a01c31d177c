#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

/// A fresh folder, removed with all it holds at the end of the test.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "orvex-image-XXXXXX").string();
        m_path = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};
