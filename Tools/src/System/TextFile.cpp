#include "System/TextFile.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>

#include "Report/Failure.h"
#include "System/AtomicFile.h"

namespace Tools {

void writeTextFile(const std::string& path, const std::string& text) {
    AtomicFile file(path);
    std::ofstream stream(file.temporaryPath(), std::ios::binary | std::ios::in);
    stream << text;
    stream.close();
    if (!stream) throw Failure(Failure::Kind::Output, fmt::format("{}: could not be written; is the disk full?", path));
    file.commit();
}

void refuseToReplace(const std::string& input, const std::string& output) {
    std::error_code error;
    if (!std::filesystem::equivalent(input, output, error)) return;
    refuse(fmt::format("The output would replace its own input, \"{}\"; choose another output.", output));
}

} // namespace Tools
