// The table of forks that are open for writing.
#include "platform/files/forks/WriteAccess.h"

#include <CoreServices/MacErrors.h>

#include <map>
#include <mutex>
#include <tuple>

#include "platform/files/forks/ForkContent.h"
#include "platform/files/stores/PartHolders.h"

namespace osa {
namespace {

using ForkKey = std::tuple<std::uint64_t, std::uint64_t, std::uint32_t, ForkKind>;

struct ClaimTable {
    std::mutex lock;
    std::map<ForkKey, WriteClaim*> claims;  // each takes itself out
};

ClaimTable& table() {
    static ClaimTable shared;
    return shared;
}

ForkKey keyOf(const Located& object, ForkKind fork) {
    return {object.status.device, object.status.inode, object.birth, fork};
}

}  // namespace

struct WriteClaim : std::enable_shared_from_this<WriteClaim> {
    ForkKey key;
    Sharing sharing = Sharing::alone;
    Located object;   // under the table's lock
    std::mutex lock;  // of what follows
    std::weak_ptr<ForkContent> content;

    void moveTo(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        Located moved(slash == 0 ? "/" : std::string_view(path).substr(0, slash),
                      std::string_view(path).substr(slash + 1));
        moved.status = object.status;
        moved.birth = object.birth;
        object = std::move(moved);
    }

    ~WriteClaim() {
        ClaimTable& all = table();
        const std::lock_guard guard(all.lock);
        const auto own = all.claims.find(key);
        if (own != all.claims.end() && own->second == this) all.claims.erase(own);
    }
};

Result<WriteAccess> WriteAccess::claim(const Located& object, ForkKind fork, Sharing sharing) {
    const ForkKey key = keyOf(object, fork);
    // Made before the lock is taken: one that is not needed takes the lock when it goes.
    const auto made = std::make_shared<WriteClaim>();
    made->key = key;
    made->sharing = sharing;
    made->object = object;
    std::shared_ptr<WriteClaim> there;
    ClaimTable& all = table();
    const std::lock_guard guard(all.lock);
    WriteClaim*& place = all.claims[key];
    // One whose last holder is letting go of it counts no more.
    if (place != nullptr) there = place->weak_from_this().lock();
    if (there == nullptr) {
        place = made.get();
        return WriteAccess(made);
    }
    if (there->sharing == Sharing::alone || sharing == Sharing::alone) return Failure(opWrErr);
    return WriteAccess(there);
}

Result<FSRef> WriteAccess::object() const {
    Located object;
    // A renaming is told to the table when it is done: not before, and not in the middle.
    const std::lock_guard noRenaming(partsLock());
    {
        const std::lock_guard guard(table().lock);
        object = claim_->object;
    }
    OSA_TRY(const posix::FileStatus status, posix::status(object.path(), posix::Follow::no));
    if (!object.isStill(status)) return Failure(fnfErr);
    return makeReference(internRealFolder(std::string(object.folder())), object.name(), status);
}

std::unique_lock<std::mutex> WriteAccess::lockContent() const {
    return std::unique_lock(claim_->lock);
}
std::shared_ptr<ForkContent> WriteAccess::content() const {
    return claim_->content.lock();
}
void WriteAccess::setContent(const std::shared_ptr<ForkContent>& content) const {
    claim_->content = content;
}

bool isOpenForWriting(const Located& object) {
    ClaimTable& all = table();
    const std::lock_guard guard(all.lock);
    return all.claims.contains(keyOf(object, ForkKind::data)) ||
           all.claims.contains(keyOf(object, ForkKind::resource));
}

void noteMove(const std::string& from, const std::string& to) {
    ClaimTable& all = table();
    const std::lock_guard guard(all.lock);
    for (auto& [key, claim] : all.claims) {
        const std::string& path = claim->object.path();
        const bool isAffected = path == from || path.starts_with(from + "/");
        if (isAffected) claim->moveTo(to + path.substr(from.size()));
    }
}

void noteExchange(const std::string& one, const std::string& other) {
    ClaimTable& all = table();
    const std::lock_guard guard(all.lock);
    for (auto& [key, claim] : all.claims) {
        const std::string& path = claim->object.path();
        if (path == one) {
            claim->moveTo(other);
        } else if (path == other) {
            claim->moveTo(one);
        }
    }
}

}  // namespace osa
