// FSDeleteObject.
//
// What has no side files goes in one step. All else is moved aside first, the object before its
// side files, to names that no walk over a folder shows: from then on it is gone for everybody, and
// until the object itself is removed everything can be moved back. After a crash there is the
// object with all that belongs to it, or nothing to be seen of it.
#include <CoreServices/MacErrors.h>

#include <new>

#include "platform/files/changes/NameSteps.h"
#include "platform/files/changes/SidePlaces.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/posix/CatalogChanges.h"

namespace osa {
namespace {

class Deletion {
  public:
    explicit Deletion(const Located& object) : object_(object) {}

    Result<void> run() {
        const bool isFolder = object_.status.isFolder();
        OSA_TRY(auto files, sideFilesOf(object_.folder(), object_.name(), isFolder));
        std::vector<std::string> inside;
        if (isFolder) {
            auto alone = sideFilesAlone(object_.path());
            // One that may not be listed can still be empty, as removing it will tell.
            if (!alone.ok() && alone.status() != permErr) return Failure(alone.status());
            if (alone.ok()) inside = *std::move(alone);
        }
        if (files.empty() && inside.empty()) return posix::remove(object_.path());

        for (SideFile& file : files) OSA_CHECK(hide(file));
        OSA_TRY(const std::string aside, steps_.moveAside(object_.path()));
        OSA_CHECK(takeOut(inside, aside));
        for (const SideFile& file : files) OSA_CHECK(putAside(file));
        OSA_CHECK(posix::remove(aside));
        steps_.keep();
        for (const std::string& path : asides_) posix::discardTree(path);
        return {};
    }

  private:
    /// "%name" is seen as soon as there is no "name". "._name" never is, and serves as well; if
    /// that is taken, there is a moment in which it is seen.
    Result<void> hide(SideFile& file) {
        if (file.how != Keeping::percent) return {};
        file.how = Keeping::dotUnderscore;
        const std::string path = file.pathFor(object_.folder(), object_.name());
        const auto renamed = steps_.rename(file.path, path);
        if (renamed.ok()) file.path = path;
        return renamed.status() == dupFNErr ? Result<void>() : renamed;
    }

    /// A folder must be empty to be removed.
    Result<void> takeOut(const std::vector<std::string>& names, const std::string& folder) {
        if (names.empty()) return {};
        const std::string outside = folder + "+";
        OSA_CHECK(steps_.makeFolder(outside, 0700));
        asides_.push_back(outside);
        for (const std::string& name : names) {
            OSA_CHECK(steps_.rename(joinPath(folder, name), joinPath(outside, name)));
        }
        return {};
    }

    Result<void> putAside(const SideFile& file) {
        if (file.how == Keeping::macosxFolder) {
            // Others' files may have come to lie there.
            OSA_TRY(const bool isOurs, isShadow(file.path));
            if (!isOurs) return {};
        }
        OSA_TRY(std::string aside, steps_.moveAside(file.path));
        asides_.push_back(std::move(aside));
        return {};
    }

    const Located& object_;  // weak
    NameSteps steps_;
    std::vector<std::string> asides_;
};

Result<void> deleteObject(const FSRef* ref) {
    OSA_TRY(const Located named, describeReference(ref));
    const PartsLock lock(named.folder());
    OSA_TRY(const Located object, locate(ref));
    if (object.isRoot()) return Failure(paramErr);
    const auto deleted = Deletion(object).run();
    forgetLastObject();
    return deleted;
}

}  // namespace
}  // namespace osa

OSErr FSDeleteObject(const FSRef* ref) {
    try {
        return static_cast<OSErr>(osa::deleteObject(ref).status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
