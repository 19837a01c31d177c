#pragma once

#include <string>
#include <vector>

/// The names of attributes that OpenEXR, and OpenImageIO's readers and writers of stills, give a meaning to.
const std::vector<std::string>& knownAttributes();
