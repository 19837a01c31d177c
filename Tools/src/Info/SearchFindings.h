#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace Tools {

/// A correction file in a folder that was searched, and why it was rejected.
struct PassedOverFile {
    std::string path;
    std::string reason; ///< for people, such as: its header names the clip "A001", not "A002"
};

/// The files that a user may mistake for the clip's correction file: in the clip's own folder, which is the first one,
/// all that end in ".olcf", in capitals too; in the other folders those that have the clip's name in theirs. In the
/// order of the folders, by name in each. A folder that cannot be listed has none; nothing is thrown for what the files
/// hold. `clipFilePath` is what the finder was given, `searchedFolders` what it reported.
std::vector<PassedOverFile> passedOverFiles(const std::string& clipFilePath,
                                            const std::vector<std::string>& searchedFolders);

/// An array, as Docs/schemas/find.json and info.json have it.
nlohmann::ordered_json json(const std::vector<PassedOverFile>& files);

/// The folders that were searched for a correction file, as a person reads them: ten, and a last line that counts the
/// others. Any thread.
std::vector<std::string> shortListOf(const std::vector<std::string>& searchedFolders);

} // namespace Tools
