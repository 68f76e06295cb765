// The order of the stores, and each thread's memory of the last object.
#include "platform/files/stores/ForkProbe.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <array>

#include "platform/base/ByteWriter.h"
#include "platform/files/stores/FolderSurroundings.h"
#include "platform/files/stores/SideFiles.h"

namespace osa {
namespace {

constexpr std::size_t kStores = 7;

struct LastObject {
    std::string path;
    posix::FileStatus status;
    posix::Time observed;
    struct Answer {
        posix::Time observed;
        StoredParts parts;
    };
    std::array<std::optional<Answer>, kStores> answers;
};

thread_local LastObject lastObject;

bool isSame(const Witness& witness, posix::Time observed, FolderSurroundings& around) {
    const auto status = witness.path == around.path()
                            ? around.status()
                            : posix::status(witness.path, posix::Follow::yes);
    if (!witness.seen) return !status.ok() && meansAbsent(status.status(), true);
    return status.ok() && status->isUnchangedSince(*witness.seen) &&
           posix::isSettled(std::max(status->changed, status->modified), observed);
}

/// One question: walks the stores, taking remembered answers that still hold.
class Question {
  public:
    explicit Question(const Located& object) : object_(object), around_(object.folder()) {
        const bool isKnown = last_.path == object.path() &&
                             object.status.isUnchangedSince(last_.status) &&
                             posix::isSettled(object.status.changed, last_.observed);
        if (isKnown) return;
        last_.path = object.path();
        last_.status = object.status;
        last_.observed = posix::now();
        last_.answers.fill(std::nullopt);
    }

    Result<const StoredParts*> ask(std::size_t store) {
        auto& answer = last_.answers[store];
        const bool holds =
            answer && std::all_of(answer->parts.witnesses.begin(), answer->parts.witnesses.end(),
                                  [&](const Witness& witness) {
                                      return isSame(witness, answer->observed, around_);
                                  });
        // An answer without a witness rests on the folder's memory or on the object itself.
        if (holds && (store == 0 || !answer->parts.witnesses.empty())) return &answer->parts;
        const posix::Time now = posix::now();
        answer.reset();
        OSA_TRY(StoredParts parts, forkStores()[store]->look(object_, around_));
        answer = LastObject::Answer{now, std::move(parts)};
        return &answer->parts;
    }

  private:
    const Located& object_;          // weak
    LastObject& last_ = lastObject;  // this thread's
    FolderSurroundings around_;
};

/// The answer of one time: if this process has changed names or parts since the object was found,
/// it may be half of the old and half of the new, and is asked for again while nothing changes.
template <typename Ask>
auto askSteadily(const Located& object, Ask ask) -> decltype(ask()) {
    auto answer = ask();
    if (isSteadySince(object.seenAt)) return answer;
    const PartsPause noChange;
    OSA_TRY(const posix::FileStatus status, posix::status(object.path(), posix::Follow::no));
    if (!object.isStill(status)) return Failure(fnfErr);
    forgetLastObject();
    return ask();
}

Result<FinderInfoBytes> askForFinderInfo(const Located& object) {
    Question question(object);
    for (std::size_t store = 0; store < kStores; ++store) {
        OSA_TRY(const StoredParts* const parts, question.ask(store));
        if (!isBlank(parts->finderInfo)) return parts->finderInfo;
    }
    return FinderInfoBytes{};
}

Result<std::shared_ptr<const StoredFork>> askForResourceFork(const Located& object) {
    std::shared_ptr<const StoredFork> found;
    Question question(object);
    for (std::size_t store = 0; store < kStores; ++store) {
        OSA_TRY(const StoredParts* const parts, question.ask(store));
        if (parts->resourceFork == nullptr) continue;
        if (found == nullptr) found = parts->resourceFork;
        if (parts->resourceFork->size() > 0) return parts->resourceFork;
    }
    return found;
}

Result<std::vector<const StoredParts*>> askAll(const Located& object) {
    std::vector<const StoredParts*> all;
    Question question(object);
    for (std::size_t store = 0; store < kStores; ++store) {
        OSA_TRY(const StoredParts* const parts, question.ask(store));
        all.push_back(parts);
    }
    return all;
}

}  // namespace

void StoredParts::addFork(std::shared_ptr<const StoredFork> fork, PartPlace place) {
    place.isBlank = fork->size() == 0;
    forkPlaces.push_back(place);
    const bool counts = resourceFork == nullptr || (resourceFork->size() == 0 && !place.isBlank);
    if (counts) resourceFork = std::move(fork);
}

void StoredParts::addFinderInfo(const FinderInfoBytes& info, PartPlace place) {
    if (osa::isBlank(info)) return;
    infoPlaces.push_back(place);
    if (osa::isBlank(finderInfo)) finderInfo = info;
}

bool hasParts(const Located& object) {
    return !object.isRoot() && (object.status.isRegular() || object.status.isFolder());
}

std::span<const ForkStore* const> forkStores() {
    static const std::array<const ForkStore*, kStores> inOrder{
        &extendedAttributes, &dotUnderscoreFile,         &appleDoubleFolder, &macosxFolder,
        &rsrcFinfFolders,    &resourceFinderInfoFolders, &percentFile};
    return inOrder;
}

Result<FinderInfoBytes> findFinderInfo(const Located& object) {
    if (object.status.isSymbolicLink()) {
        ByteWriter link;
        link.fourCC(kSymLinkFileType).fourCC(kSymLinkCreator);
        return finderInfoBytes(link.view());
    }
    if (!hasParts(object)) return FinderInfoBytes{};
    return askSteadily(object, [&] { return askForFinderInfo(object); });
}

Result<std::vector<const StoredParts*>> askEveryStore(const Located& object) {
    if (!hasParts(object)) return std::vector<const StoredParts*>{};
    return askSteadily(object, [&] { return askAll(object); });
}

void forgetLastObject() {
    lastObject.path.clear();
}

Result<std::shared_ptr<const StoredFork>> findResourceFork(const Located& object) {
    if (!hasParts(object) || object.status.isFolder()) return std::shared_ptr<const StoredFork>();
    return askSteadily(object, [&] { return askForResourceFork(object); });
}

bool isSideFile(const std::string& folder, const std::string& name) {
    static const std::array<std::string_view, 6> folders{".AppleDouble", ".rsrc",       ".finf",
                                                         ".resource",    ".finderinfo", "__MACOSX"};
    if (name.starts_with("._")) return true;
    if (std::find(folders.begin(), folders.end(), name) != folders.end()) return true;
    if (name.front() != '%' || name.size() == 1) return false;
    // A name may begin with "%" for other reasons: it takes the other half and the right content.
    const auto owner = posix::status(joinPath(folder, name.substr(1)), posix::Follow::no);
    if (!owner.ok()) return false;
    const auto parts = readAppleDoubleSideFile(joinPath(folder, name), true);
    return parts.ok() && (parts->resourceFork != nullptr || !isBlank(parts->finderInfo));
}

}  // namespace osa
