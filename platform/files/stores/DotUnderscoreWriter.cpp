// Writing "._" side files, for Finder information and for resource forks.
#include <CoreServices/MacErrors.h>

#include "platform/files/stores/SideFiles.h"

namespace osa {

std::mutex& partsLock() {
    static std::mutex lock;
    return lock;
}

Result<void> writeDotUnderscoreFile(
    const Located& object,
    const std::function<
        Result<std::shared_ptr<const ByteSource>>(std::shared_ptr<const ByteSource> old)>& edited,
    const std::function<std::shared_ptr<const ByteSource>()>& fresh) {
    const std::string path = joinPath(object.folder(), "._", object.name());
    const auto there = posix::openFile(path, posix::Follow::yes);
    if (there.ok() && (*there)->size() > 0) {
        const auto content = edited(*there);
        // A file of this name that is something else is not ours to replace.
        if (content.status() == paramErr) return Failure(dupFNErr);
        OSA_CHECK(content);
        // A link to a side file stays one.
        OSA_TRY(const std::string target, posix::realPath(path));
        return posix::replaceFile(target, **content, (*there)->status());
    }
    if (there.status() == notAFileErr) return Failure(dupFNErr);
    if (!there.ok() && there.status() != fnfErr) return Failure(there.status());
    posix::FileStatus like = object.status;
    like.mode = (like.mode & 0666) | 0600;
    return posix::replaceFile(path, *fresh(), like);
}

}  // namespace osa
