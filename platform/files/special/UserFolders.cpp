// The user's folders, and what the host says about them.
#include "platform/files/special/UserFolders.h"

#include <CoreServices/MacErrors.h>
#include <OSA/HostFolders.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <string_view>

#include "platform/base/ByteReader.h"
#include "platform/files/special/UserDirs.h"
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

/// Whether a path names the folder or something in it, links aside.
bool isBelow(const std::string& path, const std::string& folder) {
    const std::string closed = path + "/";
    return closed.starts_with(folder + "/") && closed.find("/../", folder.size()) == closed.npos;
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
    const auto bytes = posix::readFile(configuration() + "/user-dirs.dirs", kMaxUserDirsBytes);
    const std::string found = bytes.ok() ? userDirectory(asText(*bytes), key, home_) : "";
    // Nothing leads out of the host's root.
    const bool counts = !found.empty() && (!isRedirected_ || isBelow(found, home_));
    return counts ? found : home_ + "/" + otherwise;
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

OSStatus OSASetHostFolderRoot(const char* path) try {
    std::string root = path == nullptr ? "" : path;
    while (root.size() > 1 && root.ends_with('/')) root.pop_back();
    osa::HostFolders& host = osa::hostFolders();
    const std::unique_lock guard(host.lock);
    host.root = std::move(root);
    return noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSStatus OSASetApplicationFolders(const char* paths) try {
    auto folders = osa::splitPaths(paths == nullptr ? "" : paths);
    osa::HostFolders& host = osa::hostFolders();
    const std::unique_lock guard(host.lock);
    host.applications = std::move(folders);
    return noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}
