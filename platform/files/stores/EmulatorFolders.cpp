// Emulators' and old servers' folders: one with bare resource forks, one with bare Finder
// information.
#include <CoreServices/MacErrors.h>

#include "platform/files/formats/BareFork.h"
#include "platform/files/stores/FolderSurroundings.h"
#include "platform/files/stores/SideFiles.h"

namespace osa {
namespace {

/// Only what is in the folders themselves counts, not what links there lead to: it may be anything,
/// and others'.
class EmulatorFolders : public ForkStore {
  public:
    struct Folder {
        const char* name;
        bool FolderStores::*isThere;
    };
    EmulatorFolders(Folder forks, Folder infos) : forks_(forks), infos_(infos) {}

    Result<StoredParts> look(const Located& object, FolderSurroundings& around) const override {
        StoredParts parts;
        OSA_TRY(const FolderStores stores, around.stores());
        if (!(stores.*forks_.isThere) && !(stores.*infos_.isThere)) return parts;
        const auto open = [&](const Folder& folder, bool mayBeRefused) -> Result<OpenedPart> {
            const std::string path = joinPath(joinPath(around.path(), folder.name), object.name());
            return openPart(path, stores.*folder.isThere, mayBeRefused, parts);
        };
        OSA_TRY(const OpenedPart info, open(infos_, true));
        if (info != nullptr) OSA_CHECK(addInfo(*info, parts));
        const auto fork = open(forks_, false);
        if (fork.status() == permErr) {
            OSA_CHECK(addClosedFork(parts));
            return parts;
        }
        OSA_CHECK(fork);
        if (*fork != nullptr) OSA_CHECK(addFork(**fork, parts));
        return parts;
    }

  private:
    using OpenedPart = std::shared_ptr<const posix::OpenedFile>;

    /// Null when there is none; the last witness is the file.
    static Result<OpenedPart> openPart(const std::string& path, bool isFolderThere,
                                       bool mayBeRefused, StoredParts& parts) {
        OpenedPart none;
        parts.witnesses.push_back({path, std::nullopt});
        if (!isFolderThere) return none;
        const auto file = posix::openFile(path, posix::Follow::no);
        if (!file.ok())
            return meansAbsent(file.status(), mayBeRefused) ? Result(none) : Failure(file.status());
        parts.witnesses.back().seen = (*file)->status();
        return file;
    }

    static PartPlace lastWitness(const StoredParts& parts) {
        return {.form = PartPlace::Form::bare, .witness = parts.witnesses.size() - 1};
    }

    static Result<void> addInfo(const posix::OpenedFile& file, StoredParts& parts) {
        if (file.size() < kShortestBareInfo) return {};
        OSA_TRY(const auto bytes, readRange(file, CheckedRange{0, 32}.clamped(file.size())));
        parts.addFinderInfo(finderInfoBytes(bytes), lastWitness(parts));
        return {};
    }

    static Result<void> addFork(const posix::OpenedFile& file, StoredParts& parts) {
        OSA_TRY(const bool isFork, isBareFork(file));
        if (!isFork) return {};
        StoredFork fork{nullptr, parts.witnesses.back().path, file.status(), {0, file.size()}};
        parts.addFork(std::make_shared<StoredFork>(std::move(fork)), lastWitness(parts));
        return {};
    }

    /// One that may not be read is there all the same, and opening it says why it cannot be.
    static Result<void> addClosedFork(StoredParts& parts) {
        Witness& file = parts.witnesses.back();
        const auto status = posix::status(file.path, posix::Follow::no);
        if (!status.ok() || !status->isRegular()) return {};
        file.seen = *status;
        StoredFork fork{nullptr, file.path, *status, {0, status->size}};
        parts.addFork(std::make_shared<StoredFork>(std::move(fork)), lastWitness(parts));
        return {};
    }

    Folder forks_;
    Folder infos_;
};

const EmulatorFolders rsrcFinf({".rsrc", &FolderStores::rsrc}, {".finf", &FolderStores::finf});
const EmulatorFolders resourceFinderInfo({".resource", &FolderStores::resource},
                                         {".finderinfo", &FolderStores::finderInfo});

}  // namespace

const ForkStore& rsrcFinfFolders = rsrcFinf;
const ForkStore& resourceFinderInfoFolders = resourceFinderInfo;

}  // namespace osa
