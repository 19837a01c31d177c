#include "Render/FinishedFrames.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include "Report/Failure.h"

namespace Tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* listEnding = ".frames";

std::string nameOf(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

struct Version {
    std::uint64_t size;
    std::int64_t time; ///< ns since 1970
};

std::optional<Version> versionOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return Version{static_cast<std::uint64_t>(status.st_size),
                   std::int64_t{status.st_mtim.tv_sec} * 1000000000 + status.st_mtim.tv_nsec};
}

/// Takes the text before the next blank away from `rest`.
std::string_view takeWord(std::string_view& rest) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    const std::string_view word = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return word;
}

template <typename Number>
bool convert(std::string_view word, Number& number) {
    const auto [after, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc() && after == word.data() + word.size() && !word.empty();
}

} // namespace

FinishedFrames::FinishedFrames(const FilePattern& output) {
    std::array<char, 65> host{};
    gethostname(host.data(), host.size() - 1);
    const std::string begin = '.' + nameOf(output.string()) + '.';
    m_listPath = (fs::path(output.folder()) / (begin + host.data() + listEnding)).string();

    std::error_code error;
    for (fs::directory_iterator entry(output.folder(), error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with(begin) || !name.ends_with(listEnding)) continue;
        std::ifstream stream(entry->path(), std::ios::binary);
        for (std::string text; std::getline(stream, text);) {
            std::string_view rest = text;
            Line line;
            if (!convert(takeWord(rest), std::get<0>(line)) || !convert(takeWord(rest), std::get<1>(line))) continue;
            std::get<2>(line) = takeWord(rest);
            std::get<3>(line) = rest;
            m_lines.insert(std::move(line));
        }
    }
}

FinishedFrames::State FinishedFrames::stateOf(const std::string& path, const std::string& key) const {
    const std::optional<Version> version = versionOf(path);
    if (!version) return State::Missing;
    const std::string name = nameOf(path);
    if (m_lines.contains({version->size, version->time, key, name})) return State::Finished;
    for (auto line = m_lines.lower_bound({version->size, version->time, "", ""}); line != m_lines.end(); ++line) {
        if (std::get<0>(*line) != version->size || std::get<1>(*line) != version->time) break;
        if (std::get<3>(*line) == name) return State::Outdated;
    }
    return State::Unknown;
}

void FinishedFrames::add(const std::string& path, const std::string& key) {
    const std::optional<Version> version = versionOf(path);
    const std::lock_guard lock(m_mutex);
    const int descriptor = open(m_listPath.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    bool isWritten = version && descriptor >= 0;
    int error = errno;
    if (isWritten) {
        std::string line = fmt::format("{} {} {} {}\n", version->size, version->time, key, nameOf(path));
        if (!m_isOpen) {
            // A machine that broke down may have left half a line; ours must not be glued to it.
            char last = '\n';
            const off_t size = lseek(descriptor, 0, SEEK_END);
            if (size > 0 && pread(descriptor, &last, 1, size - 1) == 1 && last != '\n') line.insert(line.begin(), '\n');
        }
        isWritten = write(descriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size());
        error = errno;
        m_isOpen = isWritten; // half a line of ours must not be glued to the next one either
    }
    if (descriptor >= 0) close(descriptor);
    if (!isWritten) {
        throw Failure(Failure::Kind::Output, fmt::format("List of finished frames \"{}\" could not be written: {}.",
                                                         m_listPath, std::generic_category().message(error)));
    }
}

std::string FinishedFrames::fingerprint(const std::string& text) {
    // FNV-1a, 64 bit: the keys guard against forgetting, not against malice.
    std::uint64_t hash = 0xcbf29ce484222325u;
    for (const char character : text) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3u;
    }
    return fmt::format("{:016x}", hash);
}

std::string FinishedFrames::identity(const std::string& path) {
    const std::optional<Version> version = versionOf(path);
    if (!version) return path + " missing";
    return fmt::format("{} {} {}", path, version->size, version->time);
}

} // namespace Tools
