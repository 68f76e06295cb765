// The __MACOSX folder that unpacking a ZIP archive leaves: a shadow of the tree beside it, holding
// "._name" for each name.
#include "platform/files/stores/FolderSurroundings.h"
#include "platform/files/stores/SideFiles.h"

namespace osa {
namespace {

class MacosxFolder : public ForkStore {
  public:
    Result<StoredParts> look(const Located& object, FolderSurroundings& around) const override {
        OSA_TRY(const FolderStores stores, around.stores());
        StoredParts all;
        for (const std::string& root : stores.macosxRoots) {
            const std::string_view below = object.folder().substr(root == "/" ? 0 : root.size());
            const std::string shadow = joinPath(root, "__MACOSX", below);
            OSA_TRY(StoredParts parts,
                    readAppleDoubleSideFile(joinPath(shadow, "._", object.name()), true));
            const PartPlace place{PartPlace::Form::appleDouble, nullptr, all.witnesses.size()};
            all.addFinderInfo(parts.finderInfo, place);
            if (parts.resourceFork) all.addFork(std::move(parts.resourceFork), place);
            all.witnesses.push_back(std::move(parts.witnesses.front()));
        }
        return all;
    }
};

const MacosxFolder store;

}  // namespace

const ForkStore& macosxFolder = store;

}  // namespace osa
