#include "ImageModule.h"

#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <string>

namespace Image {

namespace {

std::string programFolder() {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0) return ".";
    const std::string program(buffer.data(), static_cast<std::size_t>(length));
    return program.substr(0, program.rfind('/'));
}

} // namespace

void* moduleFunction(const std::string& path, const char* name, const char* function) {
    std::string problem;
    for (const std::string& folder : {programFolder() + "/../lib/orvex", std::string(ORVEX_MODULE_FOLDER)}) {
        // Never closed: what it loads may have threads and exit handlers.
        void* const library = ::dlopen((folder + "/" + name + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library != nullptr) {
            if (void* const found = ::dlsym(library, function)) return found;
        }
        const char* const text = ::dlerror();
        if (problem.empty() && text != nullptr) problem = text;
    }
    throw ImageError(path, std::string("the module for this kind of file could not be loaded (") + problem +
                               "); install the program again");
}

} // namespace Image
