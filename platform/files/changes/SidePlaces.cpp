// Finding side files, and telling them from files that only have such names.
#include "platform/files/changes/SidePlaces.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <array>

#include "platform/files/References.h"
#include "platform/files/formats/AppleDouble.h"
#include "platform/files/formats/BareFork.h"
#include "platform/files/stores/SideFiles.h"

namespace osa {
namespace {

struct Place {
    Keeping how;
    const char* folder;
    const char* prefix;
};
constexpr std::array kPlaces{
    Place{Keeping::dotUnderscore, "", "._"},    Place{Keeping::appleDouble, ".AppleDouble/", ""},
    Place{Keeping::rsrc, ".rsrc/", ""},         Place{Keeping::finf, ".finf/", ""},
    Place{Keeping::resource, ".resource/", ""}, Place{Keeping::finderInfo, ".finderinfo/", ""},
    Place{Keeping::percent, "", "%"},
};
constexpr std::string_view kMacosx = "__MACOSX";
constexpr int kDeepestShadow = 100;

std::string pathAt(const Place& place, std::string_view folder, std::string_view name) {
    return joinPath(folder, std::string(place.folder) + place.prefix, name);
}

std::string shadowPath(Keeping how, std::string_view root, std::string_view folder,
                       std::string_view name) {
    const std::string_view below = folder.substr(root == "/" ? 0 : root.size());
    const std::string shadow = joinPath(root, kMacosx, below == "/" ? "" : below);
    return joinPath(shadow, how == Keeping::macosx ? "._" : "", name);
}

bool isWithin(std::string_view folder, std::string_view root) {
    if (root == "/" || folder == root) return true;
    return folder.starts_with(root) && folder[root.size()] == '/';
}

std::string parentOf(const std::string& path) {
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

/// No failure where that only says that there is none.
Result<bool> noneBecause(OSStatus status) {
    if (!meansAbsent(status, true)) return Failure(status);
    return false;
}

Result<bool> isRegular(const std::string& path) {
    const auto file = posix::status(path, posix::Follow::yes);
    if (!file.ok()) return noneBecause(file.status());
    return file->isRegular();
}

Result<bool> isBlankOrAppleDouble(const Result<std::shared_ptr<const posix::OpenedFile>>& file) {
    if (!file.ok()) return noneBecause(file.status());
    if ((*file)->size() == 0) return true;
    const auto parsed = AppleDouble::parse(*file);
    if (!parsed.ok() && parsed.status() != paramErr) return Failure(parsed.status());
    return parsed.ok();
}

Result<bool> isAppleDouble(Keeping how, const std::string& path) {
    if (how == Keeping::percent) {
        // Others' names may begin so, too: as for the iterator, it takes some content.
        OSA_TRY(const StoredParts parts, readAppleDoubleSideFile(path, true));
        return parts.resourceFork != nullptr || !isBlank(parts.finderInfo);
    }
    const auto file = posix::openFile(path, posix::Follow::yes);
    // A file that may not be read goes by its name.
    if (file.status() == permErr) return isRegular(path);
    return isBlankOrAppleDouble(file);
}

Result<bool> isBareFile(Keeping how, const std::string& path) {
    const auto file = posix::openFile(path, posix::Follow::no);
    if (file.status() == permErr) return isRegular(path);
    if (!file.ok()) return noneBecause(file.status());
    const bool isInfo = how == Keeping::finf || how == Keeping::finderInfo;
    return isInfo ? Result((*file)->size() >= kShortestBareInfo) : isBareFork(**file);
}

Result<bool> isFolderItself(const std::string& path) {
    const auto file = posix::status(path, posix::Follow::no);
    if (!file.ok()) return noneBecause(file.status());
    return file->isFolder();
}

Result<bool> isKept(Keeping how, const std::string& path) {
    switch (how) {
        case Keeping::rsrc:
        case Keeping::finf:
        case Keeping::resource:
        case Keeping::finderInfo:
            return isBareFile(how, path);
        case Keeping::macosxFolder:
            return isFolderItself(path);
        default:
            return isAppleDouble(how, path);
    }
}

/// Adds it when it is there, and its folder is what it says it is.
Result<void> look(SideFile file, std::vector<SideFile>& found) {
    OSA_TRY(const bool is, isKept(file.how, file.path));
    if (!is) return {};
    const std::string folder = parentOf(file.path);
    OSA_TRY(const std::string real, posix::realPath(folder));
    if (real == folder) found.push_back(std::move(file));
    return {};
}

Result<void> lookInShadows(std::string_view folder, std::string_view name, bool isFolder,
                           std::vector<SideFile>& found) {
    for (std::string root(folder);; root = parentOf(root)) {
        OSA_TRY(const bool has, isFolderItself(joinPath(root, kMacosx)));
        for (const Keeping how : {Keeping::macosx, Keeping::macosxFolder}) {
            if (!has || (how == Keeping::macosxFolder && !isFolder)) continue;
            OSA_CHECK(look({how, shadowPath(how, root, folder, name), root}, found));
        }
        if (root == "/") return {};
    }
}

/// Nothing that anybody would miss, going by the content: others' names may be the same by chance.
Result<bool> isSideContent(const std::string& path) {
    return isBlankOrAppleDouble(posix::openFile(path, posix::Follow::yes));
}

template <typename Check>
Result<bool> areAll(const std::string& folder, Check check) {
    OSA_TRY(auto names, posix::DirectoryReader::open(folder, posix::Follow::no));
    for (;;) {
        OSA_TRY(const std::string name, names.next());
        if (name.empty()) return true;
        OSA_TRY(const bool is, check(name));
        if (!is) return false;
    }
}

Result<bool> isShadow(const std::string& folder, int depth) {
    if (depth == kDeepestShadow) return false;
    return areAll(folder, [&](const std::string& name) -> Result<bool> {
        const std::string path = joinPath(folder, name);
        OSA_TRY(const bool isFolder, isFolderItself(path));
        if (isFolder) return isShadow(path, depth + 1);
        if (!name.starts_with("._")) return false;
        return isSideContent(path);
    });
}

/// A store for bare parts must be empty: nothing tells those of files that are gone from others'
/// files.
Result<bool> isOnlySide(const std::string& folder, const std::string& name) {
    const std::string path = joinPath(folder, name);
    OSA_TRY(const bool isFolder, isFolderItself(path));
    if (!isFolder && !name.starts_with("._")) return false;
    if (!isFolder) return isSideContent(path);
    if (name == kMacosx) return isShadow(path, 0);
    const auto store = std::ranges::find_if(
        kPlaces, [&](const Place& place) { return place.folder == name + "/"; });
    if (store == kPlaces.end()) return false;
    const bool isBare = store->how != Keeping::appleDouble;
    return areAll(path, [&](const std::string& file) -> Result<bool> {
        if (isBare) return false;
        return isSideContent(joinPath(path, file));
    });
}

}  // namespace

std::string SideFile::pathFor(std::string_view folder, std::string_view name) const {
    if (how == Keeping::macosx || how == Keeping::macosxFolder) {
        // Outside of what was unpacked a folder of its own does the same.
        return shadowPath(how, isWithin(folder, root) ? root : folder, folder, name);
    }
    const auto place = std::ranges::find(kPlaces, how, &Place::how);
    return pathAt(*place, folder, name);
}

Result<std::vector<SideFile>> sideFilesOf(std::string_view folder, std::string_view name,
                                          bool isFolder) {
    std::vector<SideFile> found;
    for (const Place& place : kPlaces) {
        // A folder's lies inside it.
        if (place.how == Keeping::appleDouble && isFolder) continue;
        OSA_CHECK(look({place.how, pathAt(place, folder, name), {}}, found));
    }
    OSA_CHECK(lookInShadows(folder, name, isFolder, found));
    return found;
}

Result<std::vector<std::string>> sideFilesAlone(const std::string& folder) {
    std::vector<std::string> found;
    OSA_TRY(auto names, posix::DirectoryReader::open(folder, posix::Follow::no));
    for (;;) {
        OSA_TRY(std::string name, names.next());
        if (name.empty()) return found;
        OSA_TRY(const bool isSide, isOnlySide(folder, name));
        if (!isSide) return Failure(fBsyErr);
        found.push_back(std::move(name));
    }
}

Result<bool> isShadow(const std::string& folder) {
    return isShadow(folder, 0);
}

}  // namespace osa
