// The user's folders, and what the host says about them.
#include "platform/files/special/UserFolders.h"

#include <OSA/HostFolders.h>

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <string_view>

#include "platform/base/ByteReader.h"
#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

constexpr std::uint64_t kMaxUserDirsBytes = 64 << 10;

struct HostFolders {
    std::shared_mutex lock;
    std::string root;  // empty: the user's real folders
    std::vector<std::string> applications;
};

HostFolders& hostFolders() {
    static HostFolders shared;
    return shared;
}

std::string hostRootPath() {
    HostFolders& host = hostFolders();
    const std::shared_lock guard(host.lock);
    return host.root;
}

std::vector<std::string> splitPaths(std::string_view list) {
    std::vector<std::string> paths;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(':'), list.size());
        if (list.starts_with('/')) paths.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return paths;
}

/// The path of a line KEY="$HOME/name" or KEY="/name"; empty for any other line, or when a folder
/// is switched off by naming the home itself.
std::string userDirectory(std::string_view line, std::string_view key, const std::string& home) {
    constexpr std::string_view kHome = "$HOME/";
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == line.npos) return {};
    line.remove_prefix(start);
    if (!line.starts_with(key) || !line.substr(key.size()).starts_with("=\"")) return {};
    line.remove_prefix(key.size() + 2);
    const bool isBelowHome = line.starts_with(kHome);
    if (isBelowHome) line.remove_prefix(kHome.size());
    std::string path;
    for (std::size_t i = 0; i < line.size() && line[i] != '"'; ++i) {
        if (line[i] == '\\' && i + 1 < line.size()) ++i;
        path += line[i];
    }
    if (path.find('\0') != path.npos) return {};
    if (isBelowHome) return path.empty() ? "" : home + "/" + path;
    return path.starts_with('/') ? path : "";
}

}  // namespace

UserFolders::UserFolders() : home_(hostRootPath()), isRedirected_(!home_.empty()) {
    if (home_.empty()) home_ = posix::environment("HOME");
    if (home_.empty()) home_ = posix::homeFolder();
}

std::string UserFolders::fromEnvironment(const char* variable, std::string otherwise) const {
    const std::string value = isRedirected_ ? "" : posix::environment(variable);
    return value.starts_with('/') ? value : otherwise;
}

std::string UserFolders::library(const char* name, const char* variable, const char* below) const {
    const std::string library = home_ + "/Library";
    const auto status = posix::status(library, posix::Follow::yes);
    if (status.ok() && status->isFolder()) return library + "/" + name;
    return fromEnvironment(variable, home_ + "/" + below);
}

std::string UserFolders::named(const char* key, const char* otherwise) const {
    std::string found;
    const auto bytes = posix::readFile(configuration() + "/user-dirs.dirs", kMaxUserDirsBytes);
    std::string_view lines = bytes.ok() ? asText(*bytes) : std::string_view();
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        // The file is a shell script to some: the last line counts.
        std::string path = userDirectory(lines.substr(0, end), key, home_);
        if (!path.empty()) found = std::move(path);
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return found.empty() ? home_ + "/" + otherwise : found;
}

std::vector<std::string> UserFolders::listed(const char* variable, const char* otherwise) const {
    if (isRedirected_) return {};
    const std::string value = posix::environment(variable);
    return splitPaths(value.empty() ? otherwise : value);
}

std::vector<std::string> hostApplicationFolders() {
    HostFolders& host = hostFolders();
    const std::shared_lock guard(host.lock);
    return host.applications;
}

}  // namespace osa

void OSASetHostFolderRoot(const char* path) {
    osa::HostFolders& host = osa::hostFolders();
    const std::unique_lock guard(host.lock);
    host.root = path == nullptr ? "" : path;
}

void OSASetApplicationFolders(const char* paths) {
    osa::HostFolders& host = osa::hostFolders();
    auto folders = osa::splitPaths(paths == nullptr ? "" : paths);
    const std::unique_lock guard(host.lock);
    host.applications = std::move(folders);
}
