// AppleDouble side files beside the object: "._name", ".AppleDouble/name" and "%name".
#include "platform/files/stores/FolderSurroundings.h"
#include "platform/files/stores/SideFiles.h"

namespace osa {
namespace {

/// Asked for before anything is known of the folder, for it is by far the most common.
class DotUnderscoreFile : public ForkStore {
  public:
    Result<StoredParts> look(const Located& object, FolderSurroundings& around) const override {
        const std::string path = joinPath(object.folder(), "._", object.name());
        OSA_TRY(StoredParts parts, readDotUnderscoreFile(path));
        if (parts.witnesses.empty()) {
            // It cannot come into being without a change of the folder, which is asked for anyway.
            OSA_TRY(const posix::FileStatus folder, around.status());
            parts.witnesses.push_back({std::string(around.path()), folder});
        }
        return parts;
    }
};

class AppleDoubleFolder : public ForkStore {
  public:
    Result<StoredParts> look(const Located& object, FolderSurroundings& around) const override {
        if (object.status.isFolder()) {
            return readAppleDoubleSideFile(joinPath(object.path(), ".AppleDouble/.Parent"), true);
        }
        OSA_TRY(const FolderStores stores, around.stores());
        if (!stores.appleDouble) return StoredParts();
        return readAppleDoubleSideFile(joinPath(around.path(), ".AppleDouble/", object.name()),
                                       true);
    }
};

class PercentFile : public ForkStore {
  public:
    Result<StoredParts> look(const Located& object, FolderSurroundings& around) const override {
        OSA_TRY(const FolderStores stores, around.stores());
        if (!stores.percentNames) return StoredParts();
        return readAppleDoubleSideFile(joinPath(around.path(), "%", object.name()), true);
    }
};

const DotUnderscoreFile dotUnderscore;
const AppleDoubleFolder folder;
const PercentFile percent;

}  // namespace

const ForkStore& dotUnderscoreFile = dotUnderscore;
const ForkStore& appleDoubleFolder = folder;
const ForkStore& percentFile = percent;

}  // namespace osa
