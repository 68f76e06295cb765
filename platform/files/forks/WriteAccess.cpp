// The table of forks that are open for writing.
#include "platform/files/forks/WriteAccess.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <tuple>
#include <utility>

#include "platform/files/forks/ForkContent.h"

namespace osa {
namespace {

using ForkKey = std::tuple<std::uint64_t, std::uint64_t, std::uint32_t, ForkKind>;

struct ClaimTable {
    std::mutex lock;
    std::multimap<ForkKey, WriteClaim*> claims;  // each takes itself out
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

    ~WriteClaim() {
        ClaimTable& all = table();
        const std::lock_guard guard(all.lock);
        const auto [first, last] = all.claims.equal_range(key);
        const auto own =
            std::find_if(first, last, [&](const auto& each) { return each.second == this; });
        if (own != last) all.claims.erase(own);
    }
};

namespace {

/// One whose last holder is letting go of it counts no more. The caller holds the table's lock.
std::shared_ptr<WriteClaim> findClaim(const ForkKey& key) {
    const auto [first, last] = table().claims.equal_range(key);
    for (auto each = first; each != last; ++each) {
        if (auto found = each->second->weak_from_this().lock()) return found;
    }
    return nullptr;
}

Located at(const Located& object, const std::string& path) {
    const std::size_t slash = path.rfind('/');
    Located moved(slash == 0 ? "/" : std::string_view(path).substr(0, slash),
                  std::string_view(path).substr(slash + 1));
    moved.status = object.status;
    moved.birth = object.birth;
    return moved;
}

}  // namespace

Result<WriteAccess> WriteAccess::claim(const Located& object, ForkKind fork, Sharing sharing) {
    // Made before the lock is taken: one that is not needed takes the lock when it goes.
    const auto made = std::make_shared<WriteClaim>();
    made->key = keyOf(object, fork);
    made->sharing = sharing;
    made->object = object;
    std::shared_ptr<WriteClaim> there;
    // One that has just been renamed would be claimed under its old name for good.
    const PartsPause noRenaming;
    OSA_TRY(const posix::FileStatus status, posix::status(object.path(), posix::Follow::no));
    if (!object.isStill(status)) return Failure(fnfErr);
    ClaimTable& all = table();
    const std::lock_guard guard(all.lock);
    there = findClaim(made->key);
    if (there == nullptr) {
        all.claims.emplace(made->key, made.get());
        return WriteAccess(made);
    }
    // In an attribute the names of a file have one resource fork, in side files each its own: who
    // has it open under one name must not be given it under another.
    const bool isOtherName = fork == ForkKind::resource && there->object.path() != object.path();
    const bool isAlone = there->sharing == Sharing::alone || sharing == Sharing::alone;
    if (isOtherName || isAlone) return Failure(opWrErr);
    return WriteAccess(there);
}

Result<FSRef> WriteAccess::object() const {
    Located object;
    // A renaming is told to the table when it is done: not before, and not in the middle.
    const PartsPause noRenaming;
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

namespace {

/// Claims that are held, with their objects.
std::vector<std::pair<std::shared_ptr<WriteClaim>, Located>> heldClaims() {
    // The last holder of a claim must not let go of it under the table's lock.
    std::vector<std::shared_ptr<WriteClaim>> alive;
    std::vector<std::pair<std::shared_ptr<WriteClaim>, Located>> held;
    const std::lock_guard guard(table().lock);
    alive.reserve(table().claims.size());
    for (const auto& [key, claim] : table().claims) {
        if (auto there = claim->weak_from_this().lock()) alive.push_back(std::move(there));
    }
    held.reserve(alive.size());
    for (const auto& claim : alive) held.emplace_back(claim, claim->object);
    return held;
}

}  // namespace

ClaimMoves ClaimMoves::ofMove(const std::string& from, const std::string& to) {
    ClaimMoves made;
    for (auto& [claim, object] : heldClaims()) {
        const std::string& path = object.path();
        const bool isAffected = path == from || path.starts_with(from + "/");
        if (isAffected) made.moves_.push_back({claim, at(object, to + path.substr(from.size()))});
    }
    return made;
}

ClaimMoves ClaimMoves::ofExchange(const std::string& one, const std::string& other) {
    ClaimMoves made;
    for (auto& [claim, object] : heldClaims()) {
        const bool isOne = object.path() == one;
        const bool isAffected = isOne || object.path() == other;
        if (isAffected) made.moves_.push_back({claim, at(object, isOne ? other : one)});
    }
    return made;
}

void ClaimMoves::tell() noexcept {
    const std::lock_guard guard(table().lock);
    for (Move& move : moves_) std::swap(move.claim->object, move.object);
}

}  // namespace osa
