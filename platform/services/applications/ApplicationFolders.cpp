// The application folders of host, user and machine, and the identifiers of entries.
#include "platform/services/applications/ApplicationFolders.h"

#include <algorithm>

#include "platform/files/special/UserFolders.h"
#include "platform/posix/FileSystem.h"
#include "platform/services/applications/Application.h"
#include "platform/text/Collation.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr std::size_t kMaxIdentifier = 1024;

bool isFolder(const std::string& path) {
    const auto found = posix::status(path, posix::Follow::no);
    return found.ok() && found->isFolder();
}

/// The rest of a path that leads into the folder; else empty.
std::string placeBelow(const std::string& folder, const std::string& path) {
    if (!path.starts_with(folder) || path.size() <= folder.size() || path[folder.size()] != '/')
        return {};
    return path.substr(folder.size() + 1);
}

/// The entry's file in the folder or, since a "-" may stand for a "/", in one below.
std::optional<std::string> entryIn(const std::string& folder, std::string_view rest, int depth) {
    std::string file = folder + "/" + std::string(rest) + std::string(kEntryExtension);
    const auto found = posix::status(file, posix::Follow::yes);
    if (found.ok() && found->isRegular()) return file;
    for (std::size_t i = rest.find('-'); depth > 1 && i != rest.npos; i = rest.find('-', i + 1)) {
        const std::string_view name = rest.substr(0, i);
        if (name.empty() || name == "." || name == "..") continue;
        const std::string below = folder + "/" + std::string(name);
        if (!isFolder(below)) continue;
        if (auto entry = entryIn(below, rest.substr(i + 1), depth - 1)) return entry;
    }
    return std::nullopt;
}

}  // namespace

std::vector<ApplicationFolder> applicationFolders() {
    const UserFolders user;
    std::vector<ApplicationFolder> folders;
    for (std::string& folder : hostApplicationFolders()) folders.push_back({folder, true});
    if (!user.home().empty()) folders.push_back({user.home() + "/Applications", true});
    if (!user.isRedirected()) folders.push_back({"/Applications", true});
    if (!user.home().empty()) folders.push_back({user.data() + "/applications", false});
    for (const std::string& data : user.listed("XDG_DATA_DIRS", "/usr/local/share:/usr/share"))
        folders.push_back({data + "/applications", false});
    return folders;
}

std::string leafOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string desktopEntryID(const std::string& path) {
    std::string identifier;
    for (const ApplicationFolder& folder : applicationFolders()) {
        identifier = placeBelow(folder.path, path);
        if (identifier.empty()) {
            const auto real = posix::realPath(folder.path);
            if (real.ok()) identifier = placeBelow(*real, path);
        }
        if (!identifier.empty()) break;
    }
    if (identifier.empty()) identifier = leafOf(path);
    std::replace(identifier.begin(), identifier.end(), '/', '-');
    if (identifier.ends_with(kEntryExtension))
        identifier.resize(identifier.size() - kEntryExtension.size());
    return identifier;
}

std::optional<std::string> desktopEntryPath(std::string_view identifier) {
    if (identifier.empty() || identifier.size() > kMaxIdentifier ||
        identifier.find('/') != identifier.npos)
        return std::nullopt;
    for (const ApplicationFolder& folder : applicationFolders()) {
        if (auto found = entryIn(folder.path, identifier, folder.depth())) return found;
    }
    return std::nullopt;
}

bool isSameButForCase(std::string_view first, std::string_view second) {
    std::u16string one;
    std::u16string other;
    if (!utf16FromUTF8(first, one) || !utf16FromUTF8(second, other)) return false;
    return isSameCaselessText(one, other);
}

}  // namespace osa
