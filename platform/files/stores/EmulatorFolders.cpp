// Emulators' and old servers' folders: one with bare resource forks, one with bare Finder
// information.
#include "platform/files/stores/FolderSurroundings.h"
#include "platform/files/stores/SideFiles.h"

namespace osa {
namespace {

class EmulatorFolders : public ForkStore {
  public:
    EmulatorFolders(bool FolderStores::*present, const char* forks, const char* infos)
        : present_(present), forks_(forks), infos_(infos) {}

    Result<StoredParts> look(const Located& object, FolderSurroundings& around) const override {
        StoredParts parts;
        OSA_TRY(const FolderStores stores, around.stores());
        if (!(stores.*present_)) return parts;
        OSA_CHECK(lookForInfo(joinPath(joinPath(around.path(), infos_), object.name()), parts));
        OSA_CHECK(lookForFork(joinPath(joinPath(around.path(), forks_), object.name()), parts));
        return parts;
    }

  private:
    static Result<void> lookForInfo(const std::string& path, StoredParts& parts) {
        const auto file = posix::openFile(path, posix::Follow::yes);
        if (!file.ok()) return absent(path, file.status(), parts);
        parts.witnesses.push_back({path, (*file)->status()});
        OSA_TRY(const auto bytes, readRange(**file, CheckedRange{0, 32}.clamped((*file)->size())));
        parts.addFinderInfo(finderInfoBytes(bytes),
                            {.form = PartPlace::Form::bare, .witness = parts.witnesses.size() - 1});
        return {};
    }

    static Result<void> lookForFork(const std::string& path, StoredParts& parts) {
        const auto status = posix::status(path, posix::Follow::yes);
        if (!status.ok()) return absent(path, status.status(), parts);
        parts.witnesses.push_back({path, *status});
        if (status->isRegular()) {
            parts.addFork(
                std::make_shared<StoredFork>(StoredFork{nullptr, path, *status, {0, status->size}}),
                {.form = PartPlace::Form::bare, .witness = parts.witnesses.size() - 1});
        }
        return {};
    }

    static Result<void> absent(const std::string& path, OSStatus status, StoredParts& parts) {
        if (!meansAbsent(status, true)) return Failure(status);
        parts.witnesses.push_back({path, std::nullopt});
        return {};
    }

    bool FolderStores::*present_;
    const char* forks_;
    const char* infos_;
};

const EmulatorFolders rsrcFinf(&FolderStores::rsrc, ".rsrc", ".finf");
const EmulatorFolders resourceFinderInfo(&FolderStores::resource, ".resource", ".finderinfo");

}  // namespace

const ForkStore& rsrcFinfFolders = rsrcFinf;
const ForkStore& resourceFinderInfoFolders = resourceFinderInfo;

}  // namespace osa
