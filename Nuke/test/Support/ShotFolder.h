#pragma once

#include <string>

#include "Support/TemporaryFolder.h"

/// A clip's folder of a test's own. It lies so deep that the search for correction files never leaves it.
class ShotFolder {
public:
    ShotFolder() { m_root.makeFolder(c_depth); }

    std::string path(const std::string& name) const { return m_root.path(c_depth + name); }
    void write(const std::string& name, const std::string& text) const { m_root.write(c_depth + name, text); }

private:
    const std::string c_depth = "1/2/3/4/5/6/";
    Support::TemporaryFolder m_root;
};
