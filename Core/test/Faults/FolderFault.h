#pragma once

#include <functional>
#include <string>

/// Makes folders vanish or fail while they are listed. The program that links it has its own opendir and readdir64.
namespace FolderFault {

/// Calls the action whenever the folder of this path is about to be opened.
void beforeOpening(const std::string& path, const std::function<void()>& action);

/// From now on, reading the folder of this path fails with this error number after so many entries, "." and ".."
/// included.
void failReading(const std::string& path, int afterEntries, int error);

/// Takes all faults back.
void clear();

} // namespace FolderFault
