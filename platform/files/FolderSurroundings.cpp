// Scanning folders for stores, and the two small memories of each thread.
#include "platform/files/FolderSurroundings.h"

#include <CoreServices/MacErrors.h>

#include <array>
#include <functional>
#include <utility>

namespace osa {
namespace {

// In a folder with more names than this the scan stops, and every store is looked into.
constexpr int kLongestScan = 2000;
// How long a folder is believed to have no __MACOSX folder beside it or above.
constexpr std::int64_t kRootsTrustedSeconds = 1;

struct ScannedFolder {
    std::string path;
    posix::FileStatus status;
    posix::Time observed;
    FolderStores stores;
};

struct KnownRoots {
    std::string path;
    posix::Time observed;
    std::vector<std::string> roots;
};

/// A fixed number of places; a folder that falls on another's place displaces it.
template <typename Entry>
Entry& place(const std::string& path) {
    thread_local std::array<Entry, 64> entries;
    return entries[std::hash<std::string>{}(path) % entries.size()];
}

Result<FolderStores> scan(const std::string& path) {
    FolderStores found;
    const FolderStores everything{true, true, true, true, {}};
    auto names = posix::DirectoryReader::open(path);
    if (!names.ok()) {
        // A folder may be closed to reading and yet its files be open to whoever knows their names.
        if (names.status() == permErr) return everything;
        return Failure(names.status());
    }
    for (int count = 0;; ++count) {
        if (count == kLongestScan) return everything;
        OSA_TRY(const std::string name, names->next());
        if (name.empty()) return found;
        if (name.front() == '%') found.percentNames = true;
        if (name.front() != '.') continue;
        if (name == ".AppleDouble") found.appleDouble = true;
        if (name == ".rsrc" || name == ".finf") found.rsrc = true;
        if (name == ".resource" || name == ".finderinfo") found.resource = true;
    }
}

Result<std::vector<std::string>> macosxRoots(const std::string& path, posix::Time now) {
    const KnownRoots& known = place<KnownRoots>(path);
    if (known.path == path && now.seconds - known.observed.seconds < kRootsTrustedSeconds) {
        return known.roots;
    }
    std::vector<std::string> roots;
    const auto beside = posix::status(joinPath(path, "__MACOSX"), posix::Follow::yes);
    if (beside.ok() && beside->isFolder()) roots.push_back(path);
    if (!beside.ok() && beside.status() != fnfErr && beside.status() != permErr) {
        return Failure(beside.status());
    }
    if (path != "/") {
        const std::size_t slash = path.rfind('/');
        OSA_TRY(const auto above, macosxRoots(slash == 0 ? "/" : path.substr(0, slash), now));
        roots.insert(roots.end(), above.begin(), above.end());
    }
    place<KnownRoots>(path) = {path, now, roots};
    return roots;
}

}  // namespace

Result<posix::FileStatus> FolderSurroundings::status() {
    if (!status_) {
        OSA_TRY(status_, posix::status(folder_, posix::Follow::yes));
    }
    return *status_;
}

Result<FolderStores> FolderSurroundings::stores() {
    OSA_TRY(const posix::FileStatus current, status());
    const posix::Time now = posix::now();
    ScannedFolder& known = place<ScannedFolder>(folder_);
    const bool isCurrent = known.path == folder_ && current.isUnchangedSince(known.status) &&
                           posix::isSettled(current.changed, known.observed);
    if (!isCurrent) {
        known.path.clear();
        OSA_TRY(FolderStores stores, scan(folder_));
        known = {folder_, current, now, std::move(stores)};
    }
    OSA_TRY(known.stores.macosxRoots, macosxRoots(folder_, now));
    return known.stores;
}

}  // namespace osa
