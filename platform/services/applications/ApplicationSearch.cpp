// Finding an application: a walk through the application folders.
#include <CoreFoundation/CFRef.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <new>
#include <unordered_set>

#include "platform/cf/StringObject.h"
#include "platform/files/References.h"
#include "platform/posix/processes/ProgramStart.h"
#include "platform/services/applications/ApplicationFolders.h"
#include "platform/services/applications/ApplicationKinds.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

/// How many names a search looks at in one application folder and those below.
constexpr std::size_t kMaxNames = 100'000;

class ApplicationSearch {
  public:
    explicit ApplicationSearch(const ApplicationCriteria& criteria) : criteria_(criteria) {}

    std::optional<Application> search(const ApplicationFolder& folder) {
        namesLeft_ = kMaxNames;
        return walk(folder.path, "", folder.holdsBundles, folder.depth());
    }

  private:
    std::vector<std::string> namesIn(const std::string& folder, posix::Follow follow);
    std::optional<Application> walk(const std::string& folder, const std::string& prefix,
                                    bool holdsBundles, int depth);
    std::optional<Application> entry(const std::string& path, const std::string& leaf,
                                     std::string identifier);
    std::optional<Application> bundle(CFBundleRef bundle, const std::string& path,
                                      const std::string& leaf) const;
    std::optional<Application> linkedBundle(const std::string& link, const std::string& leaf) const;
    bool meets(const Application& application) const;
    bool isNamed(std::string_view leaf, std::string_view extension) const {
        return isSameButForCase(leaf, criteria_.name) ||
               isSameButForCase(leaf, criteria_.name + std::string(extension));
    }

    const ApplicationCriteria& criteria_;
    std::unordered_set<std::string> identifiers_;  // of the entries that later ones are hidden by
    std::size_t namesLeft_ = kMaxNames;
};

/// In an order that does not depend on the file system; names that are no text left out.
std::vector<std::string> ApplicationSearch::namesIn(const std::string& folder,
                                                    posix::Follow follow) {
    std::vector<std::string> names;
    auto reader = posix::DirectoryReader::open(folder, follow);
    if (!reader.ok()) return names;
    for (; namesLeft_ > 0; --namesLeft_) {
        auto name = reader->next();
        if (!name.ok() || name->empty()) break;
        std::u16string units;
        if (utf16FromUTF8(*name, units)) names.push_back(*std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// No link to a folder is followed but to a bundle, and that an application folder itself may be
/// one.
std::optional<Application> ApplicationSearch::walk(const std::string& folder,
                                                   const std::string& prefix, bool holdsBundles,
                                                   int depth) {
    const auto follow = prefix.empty() ? posix::Follow::yes : posix::Follow::no;
    for (const std::string& leaf : namesIn(folder, follow)) {
        const std::string path = joinPath(folder, leaf);
        std::optional<Application> found;
        if (leaf.ends_with(kEntryExtension)) {
            const std::string stem = leaf.substr(0, leaf.size() - kEntryExtension.size());
            found = entry(path, leaf, prefix + stem);
        } else if (const auto status = posix::status(path, posix::Follow::no);
                   holdsBundles && status.ok() && status->isSymbolicLink()) {
            found = linkedBundle(path, leaf);
        } else if (status.ok() && status->isFolder()) {
            const CFRef<CFBundleRef> package = holdsBundles ? bundleAt(path) : CFRef<CFBundleRef>();
            if (package) {
                found = bundle(package.get(), path, leaf);
            } else if (depth > 1) {
                found = walk(path, prefix + leaf + "-", holdsBundles, depth - 1);
            }
        }
        if (found) return found;
    }
    return std::nullopt;
}

std::optional<Application> ApplicationSearch::entry(const std::string& path,
                                                    const std::string& leaf,
                                                    std::string identifier) {
    const bool isAnyIdentifier = criteria_.identifier.empty();
    if (!isAnyIdentifier && !isSameButForCase(identifier, criteria_.identifier))
        return std::nullopt;
    if (identifiers_.contains(identifier)) return std::nullopt;
    const auto read = DesktopEntry::read(path);
    if (!read) return std::nullopt;
    identifiers_.insert(identifier);
    if (read->isTrue("Hidden")) return std::nullopt;
    auto application = applicationOfEntry(*read, path, std::move(identifier));
    if (!application || !meets(*application)) return std::nullopt;
    if (!criteria_.name.empty() && !isNamed(leaf, kEntryExtension) &&
        !isNamed(application->name, "") && !isNamed(read->text("Name"), ""))
        return std::nullopt;
    const std::string tried = read->text("TryExec");
    if (!tried.empty() && !posix::findExecutable(tried).ok()) return std::nullopt;
    return application;
}

/// The leaf is what the bundle is called in the application folder.
std::optional<Application> ApplicationSearch::bundle(CFBundleRef bundle, const std::string& path,
                                                     const std::string& leaf) const {
    if (!criteria_.name.empty() && !isNamed(leaf, ".app")) return std::nullopt;
    auto application = applicationOfBundle(bundle, path);
    return application && meets(*application) ? application : std::nullopt;
}

std::optional<Application> ApplicationSearch::linkedBundle(const std::string& link,
                                                           const std::string& leaf) const {
    const auto path = posix::realPath(link);
    const CFRef<CFBundleRef> package = path.ok() ? bundleAt(*path) : CFRef<CFBundleRef>();
    return package ? bundle(package.get(), *path, leaf) : std::nullopt;
}

bool ApplicationSearch::meets(const Application& application) const {
    if (criteria_.signature != 0 && application.signature != criteria_.signature) return false;
    return criteria_.identifier.empty() ||
           isSameButForCase(application.identifier, criteria_.identifier);
}

OSStatus findForInfo(const ApplicationCriteria& criteria, FSRef* ref, CFURLRef* url) {
    const auto application = findApplication(criteria);
    if (!application.ok()) return application.status();
    const auto reference = referenceToPath(application->path, nullptr);
    if (!reference.ok()) return reference.status();
    if (url != nullptr) {
        *url = CFURLCreateFromFSRef(kCFAllocatorDefault, &*reference);
        if (*url == nullptr) return memFullErr;
    }
    if (ref != nullptr) *ref = *reference;
    return noErr;
}

}  // namespace

Result<Application> findApplication(const ApplicationCriteria& criteria) {
    ApplicationSearch search(criteria);
    for (const ApplicationFolder& folder : applicationFolders()) {
        if (auto found = search.search(folder)) return std::move(*found);
    }
    return Failure(kLSApplicationNotFoundErr);
}

}  // namespace osa

OSStatus LSFindApplicationForInfo(OSType creator, CFStringRef bundleID, CFStringRef name,
                                  FSRef* ref, CFURLRef* url) {
    if (url != nullptr) *url = nullptr;
    if (creator == 0 && bundleID == nullptr && name == nullptr) return paramErr;
    try {
        const osa::ApplicationCriteria criteria{creator, osa::utf8Of(bundleID), osa::utf8Of(name)};
        // Nothing has an empty name, nor the signature that stands for none.
        if ((bundleID != nullptr && criteria.identifier.empty()) ||
            (name != nullptr && criteria.name.empty()) || creator == osa::kUnknownSignature)
            return kLSApplicationNotFoundErr;
        return osa::findForInfo(criteria, ref, url);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
