// Stands in for the fuzzer's own main: runs the target once with every file of the folders named, and once with
// nothing.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    LLVMFuzzerTestOneInput(nullptr, 0);
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            // Named first, so that the last line of a target that dies names its killer.
            std::printf("%s\n", entry.path().c_str());
            std::fflush(stdout);
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::string bytes(std::istreambuf_iterator<char>(stream), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++count;
        }
    }
    std::printf("%d inputs replayed\n", count);
    return count > 0 ? 0 : 1; // a corpus that is not there would prove nothing
}
