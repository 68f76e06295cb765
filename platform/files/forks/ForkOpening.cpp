// Opening forks: for reading as sources of bytes, data forks for writing in place, resource forks
// for writing by way of a buffer.
#include "platform/files/forks/ForkOpening.h"

#include "platform/files/forks/ForkBuffer.h"
#include "platform/files/forks/WriteAccess.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/files/stores/ResourceForkWriter.h"

namespace osa {
namespace {

using Content = std::shared_ptr<ForkContent>;

class ReadOnlyFork : public ForkContent {
  public:
    explicit ReadOnlyFork(std::shared_ptr<const ByteSource> source) : source_(std::move(source)) {}
    Result<std::uint64_t> size() const override { return source_->size(); }
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override {
        return source_->readExactly(offset, target);
    }

  private:
    std::shared_ptr<const ByteSource> source_;
};

class WritableDataFork : public ForkContent {
  public:
    WritableDataFork(std::unique_ptr<posix::WritableFile> file, WriteAccess access)
        : file_(std::move(file)), access_(std::move(access)) {}
    Result<std::uint64_t> size() const override {
        OSA_TRY(const posix::FileStatus status, file_->status());
        return status.size;
    }
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override {
        return file_->readExactly(offset, target);
    }
    Result<void> write(std::uint64_t offset, ByteSpan bytes, std::uint64_t& done) override {
        return file_->write(offset, bytes, done);
    }
    Result<void> setSize(std::uint64_t size) override { return file_->setSize(size); }
    Result<void> flush() override { return file_->synchronise(); }
    Result<void> close() override { return file_->close(); }

  private:
    std::unique_ptr<posix::WritableFile> file_;
    WriteAccess access_;
};

/// The old fork until something changes, then a copy of it that becomes the fork. Several numbers
/// may share one, each on a thread of its own.
class WritableResourceFork : public ForkContent {
  public:
    WritableResourceFork(std::shared_ptr<const ByteSource> old, WriteAccess access)
        : old_(std::move(old)), access_(std::move(access)) {}

    Result<std::uint64_t> size() const override {
        const std::lock_guard guard(lock_);
        return current().size();
    }
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override {
        const std::lock_guard guard(lock_);
        return current().readExactly(offset, target);
    }
    Result<void> write(std::uint64_t offset, ByteSpan bytes, std::uint64_t& done) override {
        const std::lock_guard guard(lock_);
        done = 0;
        OSA_TRY(const auto changed, changedFrom(old_->size()));
        const auto written = changed->write(offset, bytes, done);
        if (!written.ok() && done == 0) return written;
        changed_ = changed;
        isDirty_ = isDirty_ || done > 0;
        return written;
    }
    Result<void> setSize(std::uint64_t size) override {
        const std::lock_guard guard(lock_);
        if (size == current().size()) return {};
        OSA_TRY(const auto changed, changedFrom(size));
        OSA_CHECK(changed->setSize(size));
        changed_ = changed;
        isDirty_ = true;
        return {};
    }
    Result<void> flush() override {
        const std::lock_guard guard(lock_);
        if (!isDirty_) return {};
        auto written = writeToFile();
        // Another thread may have renamed it between the two steps.
        if (written.status() == fnfErr) written = writeToFile();
        OSA_CHECK(written);
        isDirty_ = false;
        return {};
    }
    Result<void> close() override { return flush(); }

  private:
    Result<void> writeToFile() {
        OSA_TRY(const FSRef file, access_.object());
        return writeResourceFork(file, changed_);
    }
    const ByteSource& current() const { return changed_ != nullptr ? *changed_ : *old_; }
    /// Of the old fork only what is needed is copied.
    Result<std::shared_ptr<ForkBuffer>> changedFrom(std::uint64_t needed) const {
        return changed_ != nullptr ? changed_ : ForkBuffer::copyOf(*old_, needed);
    }

    mutable std::mutex lock_;
    const std::shared_ptr<const ByteSource> old_;
    std::shared_ptr<ForkBuffer> changed_;
    bool isDirty_ = false;
    WriteAccess access_;
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

/// Null when there is none.
Result<std::shared_ptr<const ByteSource>> openFoundFork(const Located& object) {
    OSA_TRY(const auto fork, findResourceFork(object));
    if (fork == nullptr) return std::shared_ptr<const ByteSource>();
    return fork->open();
}

/// Between finding and opening, this process may have put another in its place.
Result<std::shared_ptr<const ByteSource>> openSteadily(const Located& object) {
    auto opened = openFoundFork(object);
    if (opened.status() != fnfErr || isSteadySince(object.seenAt)) return opened;
    const PartsPause noChange;
    forgetLastObject();
    OSA_TRY(const posix::FileStatus status, posix::status(object.path(), posix::Follow::no));
    if (!object.isStill(status)) return Failure(fnfErr);
    return openFoundFork(object);
}

Result<std::shared_ptr<const ByteSource>> openResourceFork(const FSRef& ref) {
    OSA_TRY(const Located object, locate(&ref));
    OSA_TRY(auto fork, openSteadily(object));
    if (fork == nullptr) return Failure(errFSForkNotFound);
    return fork;
}

Result<Content> openDataForkForWriting(const Located& object, SInt8 permissions,
                                       WriteAccess access) {
    using Access = posix::WritableFile::Access;
    OSA_TRY(auto file,
            posix::WritableFile::open(
                object.path(), permissions == fsWrPerm ? Access::writing : Access::readingToo));
    OSA_TRY(const posix::FileStatus status, file->status());
    if (!object.isStill(status)) return Failure(fnfErr);
    return Content(std::make_shared<WritableDataFork>(std::move(file), std::move(access)));
}

Result<Content> openResourceForkForWriting(const Located& object, const WriteAccess& access) {
    OSA_CHECK(mayWriteResourceFork(object));
    return access.sharedContent([&]() -> Result<Content> {
        OSA_TRY(auto old, openSteadily(object));
        if (old == nullptr) old = std::make_shared<MemorySource>(ByteSpan());
        return Content(std::make_shared<WritableResourceFork>(std::move(old), access));
    });
}

Result<Content> openForWriting(const Located& object, ForkKind fork, SInt8 permissions) {
    if (!object.status.isRegular()) return Failure(notAFileErr);
    const Sharing sharing = permissions == fsRdWrShPerm ? Sharing::shared : Sharing::alone;
    OSA_TRY(WriteAccess access, WriteAccess::claim(object, fork, sharing));
    auto opened = fork == ForkKind::data
                      ? openDataForkForWriting(object, permissions, std::move(access))
                      : openResourceForkForWriting(object, access);
    const bool isLocked = (object.status.mode & 0222) == 0;
    if (opened.status() == wrPermErr && isLocked) return Failure(fLckdErr);
    return opened;
}

}  // namespace

Result<ForkKind> forkNamed(std::u16string_view name) {
    if (name.empty()) return ForkKind::data;
    if (name != kResourceForkName) return Failure(errFSBadForkName);
    return ForkKind::resource;
}

Result<std::shared_ptr<const ByteSource>> openForkForReading(const FSRef& ref, ForkKind fork) {
    return fork == ForkKind::data ? openDataFork(ref) : openResourceFork(ref);
}

Result<Content> openFork(const FSRef& ref, ForkKind fork, SInt8 permissions) {
    if (permissions != fsRdPerm) {
        OSA_TRY(const Located object, locate(&ref));
        auto opened = openForWriting(object, fork, permissions);
        if (opened.ok() || permissions != fsCurPerm) return opened;
    }
    auto source = openForkForReading(ref, fork);
    // A file without a resource fork has an empty one; folders and links have none.
    if (source.status() == errFSForkNotFound) {
        OSA_TRY(const Located object, locate(&ref));
        if (object.status.isRegular())
            source = std::shared_ptr<const ByteSource>(std::make_shared<MemorySource>(ByteSpan()));
    }
    OSA_CHECK(source);
    return Content(std::make_shared<ReadOnlyFork>(*std::move(source)));
}

Result<void> emptyFork(const FSRef& ref, ForkKind fork) {
    OSA_TRY(const Located object, locate(&ref));
    const auto opened = openForWriting(object, fork, fsRdWrPerm);
    if (opened.status() == opWrErr) return Failure(fBsyErr);
    OSA_CHECK(opened);
    OSA_CHECK((*opened)->setSize(0));
    return (*opened)->close();
}

}  // namespace osa
