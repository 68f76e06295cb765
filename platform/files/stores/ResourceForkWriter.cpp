// Finding the place for a resource fork and changing it there.
#include "platform/files/stores/ResourceForkWriter.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/files/formats/AppleDouble.h"
#include "platform/files/formats/BareFork.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/files/stores/PartHolders.h"
#include "platform/posix/CatalogChanges.h"

namespace osa {
namespace {

using Form = PartPlace::Form;

// A new side file has room for it below 4 GiB.
constexpr std::uint64_t kLargestFork = 0xFFFF0000;

/// What holds the fork, with `fork` in it.
HolderEdit edit(Form form, const ForkSource& fork) {
    return [=](const ForkSource& holder) -> Result<ForkSource> {
        if (form == Form::bare) return fork;
        if (form == Form::zeroEnded) {
            const auto zero = std::make_shared<MemorySource>(asBytes(std::string_view("", 1)));
            return ForkSource(std::make_shared<JoinedSource>(std::vector<ForkSource>{fork, zero}));
        }
        OSA_TRY(const AppleDouble file, AppleDouble::parse(holder));
        return file.withResourceFork(fork);
    };
}

ForkSource nothing() {
    return std::make_shared<MemorySource>(ByteSpan());
}

/// The holder of the fork that counts.
const PartHolder& counting(const std::vector<PartHolder>& holders) {
    const auto found =
        std::ranges::find_if(holders, [](const PartHolder& holder) { return !holder.isBlank; });
    return found == holders.end() ? holders.front() : *found;
}

Result<void> writeToSideFile(PartChanges& changes, const Located& object, const ForkSource& fork) {
    return changes.changeSideFile(object, edit(Form::appleDouble, fork),
                                  [&] { return AppleDouble::make(FinderInfoBytes{}, fork); });
}

/// The attributes, which are asked before side files, go when the side file is in place; the one
/// that counts goes last, for until then it is what everybody sees.
Result<void> moveToSideFile(PartChanges& changes, const Located& object,
                            const std::vector<PartHolder>& holders, const ForkSource& fork) {
    OSA_CHECK(writeToSideFile(changes, object, fork));
    for (auto holder = holders.rbegin(); holder != holders.rend(); ++holder) {
        if (holder->attribute != nullptr) OSA_CHECK(changes.removeAttribute(*holder));
    }
    return {};
}

/// A bare file counts only as long as it is a resource fork.
Result<bool> wouldNotCount(const PartHolder& holder, const ForkSource& fork) {
    if (holder.attribute != nullptr || holder.form != Form::bare) return false;
    OSA_TRY(const bool isFork, isBareFork(*fork));
    return !isFork;
}

Result<void> replaceFork(PartChanges& changes, const Located& object,
                         const std::vector<PartHolder>& holders, const ForkSource& fork) {
    if (holders.empty()) return writeToSideFile(changes, object, fork);
    const PartHolder& holder = counting(holders);
    OSA_TRY(const bool isElsewhere, wouldNotCount(holder, fork));
    if (isElsewhere) {
        OSA_CHECK(writeToSideFile(changes, object, fork));
        return changes.change(holder, edit(Form::bare, nothing()));
    }
    auto written = changes.change(holder, edit(holder.form, fork));
    if (written.ok()) written = changes.carryOut();
    const bool hasNoRoom = holder.attribute != nullptr && written.status() == dskFulErr;
    return hasNoRoom ? moveToSideFile(changes, object, holders, fork) : written;
}

/// The fork that counts goes last, so that no other ever comes to light.
Result<void> emptyForks(PartChanges& changes, const std::vector<PartHolder>& holders,
                        const ForkSource& empty) {
    for (auto holder = holders.rbegin(); holder != holders.rend(); ++holder) {
        if (!holder->isBlank) OSA_CHECK(changes.change(*holder, edit(holder->form, empty)));
    }
    return {};
}

Result<void> write(const Located& object, const ForkSource& fork) {
    OSA_TRY(const auto holders, partHolders(object, Part::resourceFork));
    PartChanges changes;
    OSA_CHECK(fork->size() == 0 ? emptyForks(changes, holders, fork)
                                : replaceFork(changes, object, holders, fork));
    OSA_CHECK(changes.carryOut());
    // Side files have seen to it themselves.
    const bool isInAttribute = std::ranges::any_of(
        holders, [](const PartHolder& holder) { return holder.attribute != nullptr; });
    if (isInAttribute) OSA_CHECK(posix::synchronise(object.path()));
    changes.keep();
    return {};
}

Result<void> writeUnless(const FSRef& file, const ForkSource& fork, OldFork old) {
    if (fork->size() > kLargestFork) return Failure(fileBoundsErr);
    OSA_TRY(const Located named, describeReference(&file));
    const PartsLock lock(named.folder());
    OSA_TRY(const Located object, locate(&file));
    if (!object.status.isRegular()) return Failure(notAFileErr);
    if (old == OldFork::kept) {
        OSA_TRY(const auto there, findResourceFork(object));
        if (there && there->size() > 0) return Failure(dupFNErr);
    }
    return write(object, fork);
}

}  // namespace

Result<void> writeResourceFork(const FSRef& file, const ForkSource& fork) {
    return writeUnless(file, fork, OldFork::replaced);
}

Result<void> createResourceFork(const FSRef& file, ByteSpan fork, OldFork old) {
    return writeUnless(file, std::make_shared<MemorySource>(fork), old);
}

Result<void> mayWriteResourceFork(const Located& file) {
    OSA_TRY(const auto holders, partHolders(file, Part::resourceFork));
    OSA_CHECK(posix::mayWrite(file.path()));
    if (holders.empty()) {
        OSA_CHECK(mayHaveSideFile(file));
        return posix::mayWrite(std::string(file.folder()));
    }
    const PartHolder& holder = counting(holders);
    if (holder.attribute != nullptr) return {};
    // It is replaced by another file of its name.
    OSA_TRY(const std::string path, posix::realPath(holder.path));
    return posix::mayWrite(path.substr(0, path.rfind('/') + 1));
}

}  // namespace osa
