// Makes the list of results and its place.
#include "platform/services/help/HelpResults.h"

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <atomic>

#include "platform/cf/StringObject.h"
#include "platform/files/References.h"
#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

/// Text between tags or inside a quoted attribute.
std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

Result<std::string> listOf(const std::string& query, const std::vector<HelpHit>& hits) {
    std::string list = "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>" +
                       escaped(query) + "</title>\n</head>\n<body>\n<h1>" + escaped(query) +
                       "</h1>\n<ol>\n";
    for (const HelpHit& hit : hits) {
        OSA_TRY(const std::string url, fileURLOf(hit.path));
        list += "<li><a href=\"" + escaped(url) + "\">" + escaped(hit.title) + "</a></li>\n";
    }
    return list + "</ol>\n</body>\n</html>\n";
}

/// The main bundle's name, else its program's, as the name of a folder.
std::string applicationName() {
    const CFBundleRef bundle = CFBundleGetMainBundle();
    const CFTypeRef told = CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleNameKey);
    std::string name = utf8Of(cfCast<__CFString>(told));
    if (name.empty()) {
        const auto program = CFRef<CFURLRef>::Adopt(CFBundleCopyExecutableURL(bundle));
        if (program) {
            name =
                utf8Of(CFRef<CFStringRef>::Adopt(CFURLCopyLastPathComponent(program.get())).get());
        }
    }
    std::erase(name, '\0');
    std::ranges::replace(name, '/', '-');
    // A name in UTF-8 of at most so many bytes is one that every file system takes.
    const bool isUsable = !name.empty() && name != "." && name != ".." && name.size() < 200;
    return isUsable ? name : "Application";
}

Result<std::string> resultsFolder() {
    FSRef caches;
    const OSErr found = FSFindFolder(kUserDomain, kCachedDataFolderType, kCreateFolder, &caches);
    if (found != noErr) return Failure(found);
    OSA_TRY(const Located place, locate(&caches));
    const std::string folder = joinPath(place.path(), applicationName());
    const auto made = posix::createFolder(folder, 0700);
    if (!made.ok() && made.status() != dupFNErr) return Failure(made.status());
    return folder;
}

/// Several threads and programs of one name may search at once.
std::string nameForNow() {
    static std::atomic<unsigned> last = 0;
    return ".Help Results." + std::to_string(posix::processID()) + "." + std::to_string(++last);
}

}  // namespace

Result<std::string> fileURLOf(const std::string& path) {
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
        static_cast<CFIndex>(path.size()), false));
    if (!url) return Failure(memFullErr);
    return utf8Of(CFURLGetString(url.get()));
}

Result<std::string> writeHelpResults(const std::string& query, std::vector<HelpHit> hits) {
    std::ranges::stable_sort(hits, std::ranges::greater(), &HelpHit::count);
    OSA_TRY(const std::string list, listOf(query, hits));
    OSA_TRY(const std::string folder, resultsFolder());
    const std::string beside = joinPath(folder, nameForNow());
    const std::string path = joinPath(folder, "Help Results.html");
    auto done = posix::writeFile(beside, asBytes(list));
    if (done.ok()) done = posix::rename(beside, path);
    if (done.ok()) return path;
    (void)posix::remove(beside);
    return Failure(done.status());
}

}  // namespace osa
