#include "Faults/FolderFault.h"

#include <dirent.h>
#include <dlfcn.h>

#include <cerrno>
#include <map>

namespace {

struct ReadingFault {
    int entriesLeft = 0;
    int error = 0;
};

std::map<std::string, std::function<void()>> actions;
std::map<std::string, ReadingFault> readingFaults;
std::map<DIR*, ReadingFault> openFolders;

template <typename Function>
Function* original(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

namespace FolderFault {

void beforeOpening(const std::string& path, const std::function<void()>& action) { actions[path] = action; }

void failReading(const std::string& path, int afterEntries, int error) { readingFaults[path] = {afterEntries, error}; }

void clear() {
    actions.clear();
    readingFaults.clear();
    openFolders.clear();
}

} // namespace FolderFault

extern "C" DIR* opendir(const char* path) {
    if (const auto action = actions.find(path); action != actions.end()) action->second();
    DIR* const folder = original<DIR*(const char*)>("opendir")(path);
    openFolders.erase(folder);
    if (const auto fault = readingFaults.find(path); folder && fault != readingFaults.end())
        openFolders[folder] = fault->second;
    return folder;
}

extern "C" dirent64* readdir64(DIR* folder) {
    const auto fault = openFolders.find(folder);
    if (fault != openFolders.end() && fault->second.entriesLeft-- <= 0) {
        errno = fault->second.error;
        return nullptr;
    }
    return original<dirent64*(DIR*)>("readdir64")(folder);
}
