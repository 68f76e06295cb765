// Reading side files, and forks that lie in them.
#include "platform/files/stores/SideFiles.h"

#include <CoreServices/MacErrors.h>

#include "platform/files/formats/AppleDouble.h"

namespace osa {
namespace {

// Up to this size one read serves every later question.
constexpr std::uint64_t kReadWhole = 65536;

Result<StoredParts> partsOf(const std::string& path, const posix::FileStatus& status,
                            std::shared_ptr<const ByteSource> content) {
    StoredParts parts;
    parts.witnesses.push_back({path, status});
    const bool isInMemory = content->size() <= kReadWhole;
    if (isInMemory) {
        ByteBlock whole(content->size());
        OSA_CHECK(content->readExactly(0, whole.toFill()));
        content = std::make_shared<MemorySource>(std::move(whole));
    }
    const auto parsed = AppleDouble::parse(content);
    if (!parsed.ok()) {
        if (parsed.status() == paramErr) return parts;
        return Failure(parsed.status());
    }
    constexpr PartPlace kHere{.form = PartPlace::Form::appleDouble};
    OSA_TRY(const FinderInfoBytes info, parsed->finderInfoContent());
    parts.addFinderInfo(info, kHere);
    const AppleDouble::Entry* const fork = parsed->find(AppleDouble::resourceFork);
    if (fork == nullptr) return parts;
    // A large side file is not kept open: it is opened again when the fork is.
    auto stored = isInMemory ? StoredFork{parsed->content(AppleDouble::resourceFork), {}, {}, {}}
                             : StoredFork{nullptr, path, status, fork->range};
    parts.addFork(std::make_shared<StoredFork>(std::move(stored)), kHere);
    return parts;
}

}  // namespace

Result<std::shared_ptr<const ByteSource>> StoredFork::open() const {
    if (bytes != nullptr) return bytes;
    OSA_TRY(const auto opened, posix::openFile(path, posix::Follow::yes));
    if (!opened->status().isUnchangedSince(file)) return Failure(fnfErr);
    return std::shared_ptr<const ByteSource>(std::make_shared<SubSource>(opened, range));
}

bool meansAbsent(OSStatus status, bool mayBeRefused) {
    return status == fnfErr || status == notAFileErr || status == errFSNameTooLong ||
           (mayBeRefused && status == permErr);
}

Result<StoredParts> readDotUnderscoreFile(const std::string& path) {
    const auto opened = posix::openFile(path, posix::Follow::no);
    if (opened.ok()) return partsOf(path, (*opened)->status(), *opened);
    if (opened.status() == fnfErr) return StoredParts();
    // A link, perhaps: its target comes and goes without a change of this folder.
    return readAppleDoubleSideFile(path, false);
}

Result<StoredParts> readAppleDoubleSideFile(const std::string& path, bool mayBeRefused) {
    const auto opened = posix::openFile(path, posix::Follow::yes);
    if (opened.ok()) return partsOf(path, (*opened)->status(), *opened);
    if (!meansAbsent(opened.status(), mayBeRefused)) return Failure(opened.status());
    StoredParts nothing;
    nothing.witnesses.push_back({path, std::nullopt});
    return nothing;
}

}  // namespace osa
