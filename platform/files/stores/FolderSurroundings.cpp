// Scanning folders for stores, and each thread's memory of what they have.
#include "platform/files/stores/FolderSurroundings.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "platform/files/stores/SideFiles.h"

namespace osa {
namespace {

// In a folder with more names than this the first scan stops, and every store is looked into. Once
// that was asked of it so often that a longer scan would have been cheaper, one is made.
constexpr int kFirstScan = 2000;
constexpr int kNamesForOneLook = 8;
constexpr int kScanGrowth = 8;
constexpr int kLongestScan = 1 << 20;
// How long an unchanged folder is believed to have no __MACOSX folder above it.
constexpr std::int64_t kRootsTrustedSeconds = 1;

struct ScannedFolder {
    std::string path;
    posix::FileStatus status;
    posix::Time observed;
    posix::Time rootsObserved;
    FolderStores stores;
    int scanLength = kFirstScan;  // names after which the scan stops
    bool isScannedWhole = false;
    int questions = 0;  // since, which had every store looked into

    bool needsLongerScan() const {
        return !isScannedWhole && scanLength < kLongestScan &&
               questions > scanLength / kNamesForOneLook;
    }
};

/// A fixed number of places; a folder that falls on another's place displaces it.
ScannedFolder& place(std::string_view path) {
    thread_local std::array<ScannedFolder, 64> folders;
    return folders[std::hash<std::string_view>{}(path) % folders.size()];
}

struct BareStore {
    const char* name;
    bool FolderStores::*isThere;
};
constexpr std::array kBareStores{BareStore{".rsrc", &FolderStores::rsrc},
                                 BareStore{".finf", &FolderStores::finf},
                                 BareStore{".resource", &FolderStores::resource},
                                 BareStore{".finderinfo", &FolderStores::finderInfo}};

/// What the names say may be there.
Result<FolderStores> scanNames(const std::string& path, int longest, bool& isWhole) {
    FolderStores found;
    const FolderStores everything{true, true, true, true, true, true, {}};
    isWhole = true;
    auto names = posix::DirectoryReader::open(path);
    if (!names.ok()) {
        // A folder may be closed to reading and yet its files be open to whoever knows their names.
        if (names.status() == permErr) return everything;
        return Failure(names.status());
    }
    for (int count = 0;; ++count) {
        if (count == longest) {
            isWhole = false;
            return everything;
        }
        OSA_TRY(const std::string name, names->next());
        if (name.empty()) return found;
        if (name.front() == '%') found.percentNames = true;
        if (name.front() != '.') continue;
        if (name == ".AppleDouble") found.appleDouble = true;
        for (const BareStore& store : kBareStores) {
            if (name == store.name) found.*store.isThere = true;
        }
    }
}

Result<FolderStores> scan(const std::string& path, int longest, bool& isWhole) {
    OSA_TRY(FolderStores found, scanNames(path, longest, isWhole));
    for (const BareStore& store : kBareStores) {
        if (!(found.*store.isThere)) continue;
        const auto folder = posix::status(joinPath(path, store.name), posix::Follow::no);
        if (!folder.ok() && !meansAbsent(folder.status(), true)) return Failure(folder.status());
        found.*store.isThere = folder.ok() && folder->isFolder();
    }
    return found;
}

Result<std::vector<std::string>> macosxRoots(std::string path) {
    std::vector<std::string> roots;
    for (;;) {
        const auto beside = posix::status(joinPath(path, "__MACOSX"), posix::Follow::yes);
        if (beside.ok() && beside->isFolder()) roots.push_back(path);
        if (!beside.ok() && !meansAbsent(beside.status(), true)) return Failure(beside.status());
        if (path == "/") return roots;
        path.resize(std::max<std::size_t>(path.rfind('/'), 1));
    }
}

}  // namespace

Result<posix::FileStatus> FolderSurroundings::status() {
    if (!status_) {
        OSA_TRY(status_, posix::status(std::string(folder_), posix::Follow::yes));
    }
    return *status_;
}

Result<FolderStores> FolderSurroundings::stores() {
    OSA_TRY(const posix::FileStatus current, status());
    const posix::Time now = posix::now();
    ScannedFolder& known = place(folder_);
    const bool isCurrent = known.path == folder_ && current.isUnchangedSince(known.status) &&
                           posix::isSettled(current.changed, known.observed);
    if (!known.isScannedWhole && known.questions < kLongestScan) ++known.questions;
    if (!isCurrent || known.needsLongerScan()) {
        const int length =
            isCurrent ? std::min(known.scanLength * kScanGrowth, kLongestScan) : kFirstScan;
        bool isWhole = false;
        known.path.clear();
        OSA_TRY(FolderStores stores, scan(std::string(folder_), length, isWhole));
        known = {std::string(folder_), current, now, {}, std::move(stores), length, isWhole};
    }
    if (now.seconds - known.rootsObserved.seconds > kRootsTrustedSeconds) {
        OSA_TRY(known.stores.macosxRoots, macosxRoots(std::string(folder_)));
        known.rootsObserved = now;
    }
    return known.stores;
}

}  // namespace osa
