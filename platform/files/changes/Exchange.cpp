// FSExchangeObjects: two files trade names, and their side files with them; then what shall stay
// with the names is traded back.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <new>

#include "platform/files/changes/NameSteps.h"
#include "platform/files/changes/SidePlaces.h"
#include "platform/files/forks/WriteAccess.h"
#include "platform/files/stores/FinderInfoWriter.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/posix/CatalogChanges.h"

namespace osa {
namespace {

struct SideMove {
    std::string from, to;
};

Result<std::vector<SideMove>> sideMoves(const Located& object, const Located& other) {
    OSA_TRY(const auto files, sideFilesOf(object.folder(), object.name(), false));
    std::vector<SideMove> moves;
    for (const SideFile& file : files) {
        moves.push_back({file.path, file.pathFor(other.folder(), other.name())});
    }
    return moves;
}

/// Those that have the same place for both files.
Result<void> exchangePairs(NameSteps& steps, std::vector<SideMove>& moves,
                           std::vector<SideMove>& others) {
    for (auto move = moves.begin(); move != moves.end();) {
        const auto pair = std::ranges::find_if(others, [&](const SideMove& other) {
            return other.from == move->to && other.to == move->from;
        });
        if (pair == others.end()) {
            ++move;
            continue;
        }
        OSA_CHECK(steps.exchange(move->from, move->to));
        others.erase(pair);
        move = moves.erase(move);
    }
    return {};
}

Result<void> moveRest(NameSteps& steps, const std::vector<SideMove>& moves) {
    for (const SideMove& move : moves) {
        OSA_CHECK(steps.makeFolder(move.to.substr(0, move.to.rfind('/'))));
        OSA_CHECK(steps.rename(move.from, move.to));
    }
    return {};
}

/// Permission bits, the first file's put back when the second's cannot be changed.
Result<void> exchangeModes(const Located& one, const Located& other) {
    if (one.status.mode == other.status.mode) return {};
    OSA_CHECK(posix::changeMode(one.path(), one.status.mode));
    const auto changed = posix::changeMode(other.path(), other.status.mode);
    if (!changed.ok()) posix::putBackMode(one.path(), other.status.mode);
    return changed;
}

/// The file that now lies where `place` says.
Located movedTo(const Located& place, const Located& file) {
    Located moved = place;
    moved.status = file.status;
    moved.birth = file.birth;
    return moved;
}

Result<void> exchangeNames(NameSteps& steps, const Located& one, const Located& other) {
    OSA_TRY(auto moves, sideMoves(one, other));
    OSA_TRY(auto others, sideMoves(other, one));
    OSA_CHECK(exchangePairs(steps, moves, others));
    OSA_CHECK(steps.exchange(one.path(), other.path()));
    OSA_CHECK(moveRest(steps, moves));
    return moveRest(steps, others);
}

Result<void> exchange(const Located& one, const Located& other) {
    OSA_TRY(const FinderInfoBytes oneInfo, findFinderInfo(one));
    OSA_TRY(const FinderInfoBytes otherInfo, findFinderInfo(other));
    ClaimMoves claims = ClaimMoves::ofExchange(one.path(), other.path());
    NameSteps steps;
    PartChanges infos;
    OSA_CHECK(exchangeNames(steps, one, other));
    forgetLastObject();
    if (oneInfo != otherInfo) {
        OSA_CHECK(changeFinderInfo(infos, movedTo(one, other), oneInfo));
        OSA_CHECK(changeFinderInfo(infos, movedTo(other, one), otherInfo));
    }
    OSA_CHECK(infos.carryOut());
    OSA_CHECK(exchangeModes(one, other));
    claims.tell();
    infos.keep();
    steps.keep();
    return {};
}

Result<void> exchangeObjects(const FSRef* ref, const FSRef* otherRef) {
    OSA_TRY(const Located named, describeReference(ref));
    OSA_TRY(const Located otherNamed, describeReference(otherRef));
    const PartsLock lock(named.folder(), otherNamed.folder());
    OSA_TRY(const Located one, locate(ref));
    OSA_TRY(const Located other, locate(otherRef));
    if (!one.status.isRegular() || !other.status.isRegular()) return Failure(notAFileErr);
    if (one.path() == other.path()) return {};
    OSA_TRY(const std::uint64_t device, volumeDevice(one));
    OSA_TRY(const std::uint64_t otherDevice, volumeDevice(other));
    if (device != otherDevice) return Failure(diffVolErr);
    const auto exchanged = exchange(one, other);
    forgetLastObject();
    return exchanged;
}

}  // namespace
}  // namespace osa

OSErr FSExchangeObjects(const FSRef* ref, const FSRef* destRef) {
    try {
        return static_cast<OSErr>(osa::exchangeObjects(ref, destRef).status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
