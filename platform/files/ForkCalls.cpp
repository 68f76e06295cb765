// Opening, reading and closing forks by number.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <string_view>

#include "platform/files/Forks.h"
#include "platform/files/ReferenceNumbers.h"
#include "platform/files/stores/ForkProbe.h"

namespace osa {
namespace {

constexpr std::u16string_view kResourceForkName = u"RESOURCE_FORK";

struct OpenFork : OpenFile {
    static constexpr Kind kKind = Kind::fork;
    explicit OpenFork(std::shared_ptr<const ByteSource> bytes)
        : OpenFile(kKind), source(std::move(bytes)) {}
    const std::shared_ptr<const ByteSource> source;
    std::mutex lock;  // of the mark
    std::uint64_t mark = 0;
};

Result<std::shared_ptr<const ByteSource>> openDataFork(const FSRef& ref) {
    OSA_TRY(const Located named, describeReference(&ref));
    const auto file = posix::openFile(named.path(), posix::Follow::no);
    if (file.ok()) {
        if (!named.isStill((*file)->status())) return Failure(fnfErr);
        return std::shared_ptr<const ByteSource>(*file);
    }
    if (file.status() != notAFileErr) return Failure(file.status());
    OSA_TRY(const Located object, locate(&ref));
    if (!object.status.isSymbolicLink()) return Failure(notAFileErr);
    OSA_TRY(const std::string target, posix::readLink(object.path()));
    return std::shared_ptr<const ByteSource>(std::make_shared<MemorySource>(asBytes(target)));
}

Result<std::shared_ptr<const ByteSource>> openResourceFork(const FSRef& ref) {
    OSA_TRY(const Located object, locate(&ref));
    OSA_TRY(const auto fork, findResourceFork(object));
    if (!fork) return Failure(errFSForkNotFound);
    return fork->open();
}

Result<SInt16> openFork(const FSRef* ref, std::u16string_view name, SInt8 permissions) {
    if (permissions < fsCurPerm || permissions > fsRdWrShPerm) return Failure(paramErr);
    if (!name.empty() && name != kResourceForkName) return Failure(errFSBadForkName);
    if (permissions > fsRdPerm) {
        OSA_TRY(const Located object, locate(ref));
        return Failure(object.status.isFolder() ? notAFileErr : wrPermErr);
    }
    if (ref == nullptr) return Failure(paramErr);
    const ForkKind kind = name.empty() ? ForkKind::data : ForkKind::resource;
    OSA_TRY(auto source, openForkForReading(*ref, kind));
    return addOpenFile(std::make_shared<OpenFork>(std::move(source)));
}

std::shared_ptr<OpenFork> findFork(SInt16 number) {
    return findOpenFile<OpenFork>(number);
}

OSErr closeFork(SInt16 number) {
    return findFork(number) != nullptr && removeOpenFile(number) ? noErr : rfNumErr;
}

/// Where `mode` and `offset` lead; it may be past the end. posErr before the start.
Result<std::uint64_t> positionFrom(const OpenFork& fork, unsigned mode, std::int64_t offset) {
    std::uint64_t base = 0;
    switch (mode) {
        case fsAtMark:
            return fork.mark;
        case fsFromStart:
            break;
        case fsFromLEOF:
            base = fork.source->size();
            break;
        case fsFromMark:
            base = fork.mark;
            break;
        default:
            return Failure(errFSBadPosMode);
    }
    std::int64_t position = 0;
    if (__builtin_add_overflow(static_cast<std::int64_t>(base), offset, &position)) {
        return Failure(offset < 0 ? posErr : eofErr);
    }
    if (position < 0) return Failure(posErr);
    return static_cast<std::uint64_t>(position);
}

struct Reading {
    unsigned mode = fsAtMark;
    std::int64_t offset = 0;
    std::uint32_t wanted = 0;
    void* buffer = nullptr;
    std::uint32_t done = 0;
};

Result<void> read(SInt16 number, Reading& reading) {
    const auto fork = findFork(number);
    if (fork == nullptr) return Failure(rfNumErr);
    if (reading.buffer == nullptr && reading.wanted > 0) return Failure(paramErr);
    const std::lock_guard guard(fork->lock);
    OSA_TRY(const std::uint64_t start, positionFrom(*fork, reading.mode, reading.offset));
    const CheckedRange there = CheckedRange{start, reading.wanted}.clamped(fork->source->size());
    auto* const target = static_cast<std::byte*>(reading.buffer);
    OSA_CHECK(fork->source->readExactly(there.offset, {target, there.length}));
    fork->mark = there.offset + there.length;
    reading.done = static_cast<std::uint32_t>(there.length);
    if (there.length < reading.wanted) return Failure(eofErr);
    return {};
}

/// Positions and lengths of the 32-bit calls.
Result<SInt32> narrow(std::uint64_t value) {
    if (value > std::numeric_limits<SInt32>::max()) return Failure(fileBoundsErr);
    return static_cast<SInt32>(value);
}

Result<void> setMark(SInt16 number, unsigned mode, std::int64_t offset) {
    const auto fork = findFork(number);
    if (fork == nullptr) return Failure(rfNumErr);
    const std::lock_guard guard(fork->lock);
    OSA_TRY(const std::uint64_t position, positionFrom(*fork, mode, offset));
    fork->mark = std::min(position, fork->source->size());
    if (position > fork->source->size()) return Failure(eofErr);
    return {};
}

OSErr deliver(const Result<SInt32>& value, SInt32* target) {
    if (value.ok()) *target = *value;
    return static_cast<OSErr>(value.status());
}

}  // namespace

Result<std::shared_ptr<const ByteSource>> openForkForReading(const FSRef& ref, ForkKind fork) {
    return fork == ForkKind::data ? openDataFork(ref) : openResourceFork(ref);
}

}  // namespace osa

OSErr FSGetDataForkName(HFSUniStr255* dataForkName) {
    if (dataForkName == nullptr) return paramErr;
    *dataForkName = {};
    return noErr;
}

OSErr FSGetResourceForkName(HFSUniStr255* resourceForkName) {
    if (resourceForkName == nullptr) return paramErr;
    *resourceForkName = {};
    resourceForkName->length = static_cast<UInt16>(osa::kResourceForkName.size());
    std::copy(osa::kResourceForkName.begin(), osa::kResourceForkName.end(),
              resourceForkName->unicode);
    return noErr;
}

OSErr FSOpenFork(const FSRef* ref, UniCharCount forkNameLength, const UniChar* forkName,
                 SInt8 permissions, SInt16* forkRefNum) {
    if (forkRefNum == nullptr || (forkName == nullptr && forkNameLength > 0)) return paramErr;
    *forkRefNum = 0;
    const std::u16string_view name(reinterpret_cast<const char16_t*>(forkName), forkNameLength);
    const auto opened = osa::openFork(ref, name, permissions);
    if (opened.ok()) *forkRefNum = *opened;
    return static_cast<OSErr>(opened.status());
}

OSErr FSCloseFork(SInt16 forkRefNum) {
    return osa::closeFork(forkRefNum);
}
OSErr FSClose(SInt16 refNum) {
    return osa::closeFork(refNum);
}

OSErr FSReadFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset, UInt32 requestCount,
                 void* buffer, UInt32* actualCount) {
    // The upper bits are hints about caching.
    osa::Reading reading{positionMode & 3u, positionOffset, requestCount, buffer};
    const auto done = osa::read(forkRefNum, reading);
    if (actualCount != nullptr) *actualCount = reading.done;
    return static_cast<OSErr>(done.status());
}

OSErr FSGetForkSize(SInt16 forkRefNum, SInt64* forkSize) {
    const auto fork = osa::findFork(forkRefNum);
    if (fork == nullptr) return rfNumErr;
    if (forkSize == nullptr) return paramErr;
    *forkSize = static_cast<SInt64>(fork->source->size());
    return noErr;
}

OSErr FSRead(SInt16 refNum, SInt32* count, void* buffer) {
    if (count == nullptr || *count < 0) return paramErr;
    osa::Reading reading{fsAtMark, 0, static_cast<std::uint32_t>(*count), buffer};
    const auto done = osa::read(refNum, reading);
    *count = static_cast<SInt32>(reading.done);
    return static_cast<OSErr>(done.status());
}

OSErr GetEOF(SInt16 refNum, SInt32* logEOF) {
    const auto fork = osa::findFork(refNum);
    if (fork == nullptr) return rfNumErr;
    if (logEOF == nullptr) return paramErr;
    return osa::deliver(osa::narrow(fork->source->size()), logEOF);
}

OSErr GetFPos(SInt16 refNum, SInt32* filePos) {
    const auto fork = osa::findFork(refNum);
    if (fork == nullptr) return rfNumErr;
    if (filePos == nullptr) return paramErr;
    const std::lock_guard guard(fork->lock);
    return osa::deliver(osa::narrow(fork->mark), filePos);
}

OSErr SetFPos(SInt16 refNum, SInt16 posMode, SInt32 posOff) {
    return static_cast<OSErr>(
        osa::setMark(refNum, static_cast<unsigned>(posMode), posOff).status());
}
