// Opening, reading, changing and closing forks by number.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <new>
#include <string_view>

#include "platform/files/ReferenceNumbers.h"
#include "platform/files/forks/ForkOpening.h"

namespace osa {
namespace {

struct OpenFork : OpenFile {
    static constexpr Kind kKind = Kind::fork;
    OpenFork(std::shared_ptr<ForkContent> bytes, bool canBeRead)
        : OpenFile(kKind), content(std::move(bytes)), mayRead(canBeRead) {}
    Result<void> flush() override {
        const std::lock_guard guard(lock);
        return content->flush();
    }

    const std::shared_ptr<ForkContent> content;
    const bool mayRead;
    std::mutex lock;  // of the mark, and of the content between two steps
    std::uint64_t mark = 0;
};

/// Runs a published call that may run out of memory.
template <typename Call>
OSErr statusOf(Call call) {
    try {
        return static_cast<OSErr>(call().status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

Result<SInt16> open(const FSRef* ref, std::u16string_view name, SInt8 permissions) {
    if (permissions < fsCurPerm || permissions > fsRdWrShPerm) return Failure(paramErr);
    OSA_TRY(const ForkKind kind, forkNamed(name));
    if (ref == nullptr) return Failure(paramErr);
    OSA_TRY(auto content, openFork(*ref, kind, permissions));
    return addOpenFile(std::make_shared<OpenFork>(std::move(content), permissions != fsWrPerm));
}

Result<std::shared_ptr<OpenFork>> forkOf(SInt16 number) {
    auto fork = findOpenFile<OpenFork>(number);
    if (fork == nullptr) return Failure(rfNumErr);
    return fork;
}

/// The number is free whatever the last writing answers.
Result<void> closeFork(SInt16 number) {
    OSA_TRY(const auto fork, forkOf(number));
    if (!removeOpenFile(number, *fork)) return Failure(rfNumErr);
    const std::lock_guard guard(fork->lock);
    return fork->content->close();
}

/// Where `mode` and `offset` lead; it may be past the end. posErr before the start.
Result<std::uint64_t> positionFrom(const OpenFork& fork, unsigned mode, std::int64_t offset) {
    std::uint64_t base = 0;
    switch (mode) {
        case fsAtMark:
            return fork.mark;
        case fsFromStart:
            break;
        case fsFromLEOF: {
            OSA_TRY(base, fork.content->size());
            break;
        }
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
    OSA_TRY(const auto fork, forkOf(number));
    if (reading.buffer == nullptr && reading.wanted > 0) return Failure(paramErr);
    if (!fork->mayRead) return Failure(permErr);
    const std::lock_guard guard(fork->lock);
    OSA_TRY(const std::uint64_t start, positionFrom(*fork, reading.mode, reading.offset));
    OSA_TRY(const std::uint64_t size, fork->content->size());
    const CheckedRange there = CheckedRange{start, reading.wanted}.clamped(size);
    auto* const target = static_cast<std::byte*>(reading.buffer);
    OSA_CHECK(fork->content->readExactly(there.offset, {target, there.length}));
    fork->mark = there.offset + there.length;
    reading.done = static_cast<std::uint32_t>(there.length);
    if (there.length < reading.wanted) return Failure(eofErr);
    return {};
}

struct Writing {
    unsigned mode = fsAtMark;
    std::int64_t offset = 0;
    std::uint32_t wanted = 0;
    const void* buffer = nullptr;
    std::uint32_t done = 0;
};

Result<void> write(SInt16 number, Writing& writing) {
    OSA_TRY(const auto fork, forkOf(number));
    if (writing.buffer == nullptr && writing.wanted > 0) return Failure(paramErr);
    const std::lock_guard guard(fork->lock);
    OSA_TRY(const std::uint64_t start, positionFrom(*fork, writing.mode, writing.offset));
    if (!CheckedRange{start, writing.wanted}.fits(std::numeric_limits<std::int64_t>::max())) {
        return Failure(fileBoundsErr);
    }
    std::uint64_t done = 0;
    const ByteSpan bytes(static_cast<const std::byte*>(writing.buffer), writing.wanted);
    const auto written = fork->content->write(start, bytes, done);
    writing.done = static_cast<std::uint32_t>(done);
    if (written.ok() || done > 0) fork->mark = start + done;
    return written;
}

Result<void> setSize(SInt16 number, unsigned mode, std::int64_t offset) {
    OSA_TRY(const auto fork, forkOf(number));
    const std::lock_guard guard(fork->lock);
    OSA_TRY(const std::uint64_t size, positionFrom(*fork, mode, offset));
    OSA_CHECK(fork->content->setSize(size));
    fork->mark = std::min(fork->mark, size);
    return {};
}

Result<std::uint64_t> sizeOf(SInt16 number) {
    OSA_TRY(const auto fork, forkOf(number));
    return fork->content->size();
}

Result<std::uint64_t> markOf(SInt16 number) {
    OSA_TRY(const auto fork, forkOf(number));
    const std::lock_guard guard(fork->lock);
    return fork->mark;
}

Result<void> setMark(SInt16 number, unsigned mode, std::int64_t offset) {
    OSA_TRY(const auto fork, forkOf(number));
    const std::lock_guard guard(fork->lock);
    OSA_TRY(const std::uint64_t position, positionFrom(*fork, mode, offset));
    OSA_TRY(const std::uint64_t size, fork->content->size());
    fork->mark = std::min(position, size);
    if (position > size) return Failure(eofErr);
    return {};
}

/// Positions and lengths of the 64-bit calls and of the 32-bit ones.
template <typename Integer>
OSErr deliver(const Result<std::uint64_t>& value, Integer* target) {
    if (!value.ok()) return static_cast<OSErr>(value.status());
    if (target == nullptr) return paramErr;
    if (*value > static_cast<std::uint64_t>(std::numeric_limits<Integer>::max()))
        return fileBoundsErr;
    *target = static_cast<Integer>(*value);
    return noErr;
}

Result<void> flush(SInt16 number) {
    const auto file = findOpenFile(number);
    if (file == nullptr) return Failure(rfNumErr);
    return file->flush();
}

}  // namespace
}  // namespace osa

OSErr FSOpenFork(const FSRef* ref, UniCharCount forkNameLength, const UniChar* forkName,
                 SInt8 permissions, SInt16* forkRefNum) {
    if (forkRefNum == nullptr || (forkName == nullptr && forkNameLength > 0)) return paramErr;
    *forkRefNum = 0;
    const std::u16string_view name(reinterpret_cast<const char16_t*>(forkName), forkNameLength);
    return osa::statusOf([&] {
        const auto opened = osa::open(ref, name, permissions);
        if (opened.ok()) *forkRefNum = *opened;
        return opened;
    });
}

OSErr FSpOpenDF(const FSSpec* spec, SInt8 permission, SInt16* refNum) {
    if (refNum == nullptr) return paramErr;
    *refNum = 0;
    FSRef file;
    const OSErr status = FSpMakeFSRef(spec, &file);
    return status != noErr ? status : FSOpenFork(&file, 0, nullptr, permission, refNum);
}

OSErr FSCloseFork(SInt16 forkRefNum) {
    return osa::statusOf([&] { return osa::closeFork(forkRefNum); });
}
OSErr FSClose(SInt16 refNum) {
    return FSCloseFork(refNum);
}
OSErr FSFlushFork(SInt16 forkRefNum) {
    return osa::statusOf([&] { return osa::flush(forkRefNum); });
}

// The upper bits of a position mode are hints about caching.

OSErr FSReadFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset, UInt32 requestCount,
                 void* buffer, UInt32* actualCount) {
    osa::Reading reading{positionMode & 3u, positionOffset, requestCount, buffer};
    const OSErr status = osa::statusOf([&] { return osa::read(forkRefNum, reading); });
    if (actualCount != nullptr) *actualCount = reading.done;
    return status;
}

OSErr FSWriteFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                  UInt32 requestCount, const void* buffer, UInt32* actualCount) {
    osa::Writing writing{positionMode & 3u, positionOffset, requestCount, buffer};
    const OSErr status = osa::statusOf([&] { return osa::write(forkRefNum, writing); });
    if (actualCount != nullptr) *actualCount = writing.done;
    return status;
}

OSErr FSGetForkSize(SInt16 forkRefNum, SInt64* forkSize) {
    return osa::deliver(osa::sizeOf(forkRefNum), forkSize);
}
OSErr FSSetForkSize(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset) {
    return osa::statusOf([&] { return osa::setSize(forkRefNum, positionMode, positionOffset); });
}
OSErr FSGetForkPosition(SInt16 forkRefNum, SInt64* position) {
    return osa::deliver(osa::markOf(forkRefNum), position);
}
OSErr FSSetForkPosition(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset) {
    return osa::statusOf([&] { return osa::setMark(forkRefNum, positionMode, positionOffset); });
}

OSErr FSRead(SInt16 refNum, SInt32* count, void* buffer) {
    if (count == nullptr || *count < 0) return paramErr;
    UInt32 actual = 0;
    const OSErr status =
        FSReadFork(refNum, fsAtMark, 0, static_cast<UInt32>(*count), buffer, &actual);
    *count = static_cast<SInt32>(actual);
    return status;
}

OSErr FSWrite(SInt16 refNum, SInt32* count, const void* buffer) {
    if (count == nullptr || *count < 0) return paramErr;
    UInt32 actual = 0;
    const OSErr status =
        FSWriteFork(refNum, fsAtMark, 0, static_cast<UInt32>(*count), buffer, &actual);
    *count = static_cast<SInt32>(actual);
    return status;
}

OSErr GetEOF(SInt16 refNum, SInt32* logEOF) {
    return osa::deliver(osa::sizeOf(refNum), logEOF);
}
OSErr SetEOF(SInt16 refNum, SInt32 logEOF) {
    return FSSetForkSize(refNum, fsFromStart, logEOF);
}
OSErr GetFPos(SInt16 refNum, SInt32* filePos) {
    return osa::deliver(osa::markOf(refNum), filePos);
}
OSErr SetFPos(SInt16 refNum, SInt16 posMode, SInt32 posOff) {
    return FSSetForkPosition(refNum, static_cast<UInt16>(posMode), posOff);
}
