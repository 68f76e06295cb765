// Writing to the place of a resource fork, and to a data fork.
//
// A data fork is changed in place: another file in its stead would leave all references to it and
// its other names behind. It is one fork or the other at every moment all the same, since its
// header, which is written in one go, tells where data and map begin. The new ones are written
// behind the old file first; when the header points there they are written once more at the usual
// place, where nothing counts any longer, and the header points there at last.
#include "platform/resources/ForkPlace.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/files/forks/ForkOpening.h"
#include "platform/files/forks/WriteAccess.h"
#include "platform/files/stores/ResourceForkWriter.h"
#include "platform/posix/WritableFile.h"

namespace osa {
namespace {

using Source = std::shared_ptr<const ByteSource>;
using File = std::shared_ptr<posix::WritableFile>;

class ResourceForkPlace : public ForkPlace {
  public:
    explicit ResourceForkPlace(WriteAccess access) : access_(std::move(access)) {}

    Result<Source> read() override { return onFile(open); }
    Result<Content> write(const ForkImage& image) override {
        Source written = image.fork();
        OSA_CHECK(onFile([&](const FSRef& file) { return writeResourceFork(file, written); }));
        // The parts of the image hold the same bytes, if the fork cannot be opened now.
        auto stored = onFile(open);
        if (stored.ok() && (*stored)->size() == written->size()) written = *std::move(stored);
        return Content{std::move(written), kForkHeadLength};
    }
    /// Side files last once they are written; attributes go with the file.
    Result<void> flush() override {
        return onFile([](const FSRef& ref) -> Result<void> {
            OSA_TRY(const Located object, locate(&ref));
            using Access = posix::WritableFile::Access;
            OSA_TRY(const auto file, posix::WritableFile::open(object.path(), Access::writing));
            return file->synchronise();
        });
    }
    bool isOf(const Located& file, ForkKind fork) const override {
        if (fork != ForkKind::resource) return false;
        const auto ref = access_.object();
        if (!ref.ok()) return false;
        const auto own = locate(&*ref);
        return own.ok() && own->path() == file.path() && file.isStill(own->status);
    }

  private:
    static Result<Source> open(const FSRef& file) {
        return openForkForReading(file, ForkKind::resource);
    }
    /// Again when it is not there: another thread may rename it between the two steps.
    template <typename Work>
    auto onFile(Work work) const -> decltype(work(FSRef())) {
        for (int left = kMostTries; true; --left) {
            OSA_TRY(const FSRef file, access_.object());
            auto done = work(file);
            if (done.status() != fnfErr || left == 1) return done;
        }
    }
    static constexpr int kMostTries = 20;

    WriteAccess access_;
};

/// A file under change, as it was when its size was taken.
class FileContent : public ByteSource {
  public:
    FileContent(File file, std::uint64_t size) : file_(std::move(file)), size_(size) {}
    std::uint64_t size() const override { return size_; }
    void setSize(std::uint64_t size) { size_ = size; }
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override {
        return file_->readExactly(offset, target);
    }

  private:
    File file_;
    std::uint64_t size_;
};

/// Copies through a buffer of its own, so that it needs no memory while a file is half changed.
class Copier {
  public:
    explicit Copier(posix::WritableFile& file) : file_(file), chunk_(kChunk) {}

    Result<void> copy(const ByteSource& source, std::uint64_t target) {
        const std::uint64_t size = source.size();
        for (std::uint64_t done = 0; done < size;) {
            const auto part = chunk_.toFill().first(std::min<std::uint64_t>(size - done, kChunk));
            OSA_CHECK(source.readExactly(done, part));
            OSA_CHECK(write(target + done, part));
            done += part.size();
        }
        return {};
    }
    Result<void> write(std::uint64_t target, ByteSpan bytes) {
        std::uint64_t done = 0;
        return file_.write(target, bytes, done);
    }

  private:
    static constexpr std::size_t kChunk = 65536;
    posix::WritableFile& file_;
    ByteBlock chunk_;
};

class DataForkPlace : public ForkPlace {
  public:
    DataForkPlace(File file, const Located& object, WriteAccess access)
        : file_(std::move(file)), object_(object), access_(std::move(access)) {}

    Result<Source> read() override {
        OSA_TRY(const posix::FileStatus status, file_->status());
        return Source(std::make_shared<FileContent>(file_, status.size));
    }

    Result<Content> write(const ForkImage& image) override {
        OSA_TRY(const posix::FileStatus status, file_->status());
        const std::uint64_t bodyLength = image.data->size() + image.map->size();
        const std::uint64_t end = kForkHeadLength + bodyLength;
        const std::uint64_t aside = std::max(status.size, end);
        if (aside + bodyLength > kLargestOffset) return Failure(fileBoundsErr);

        // Nothing is allocated from here on: when it is done, it must not fail.
        const auto source = std::make_shared<FileContent>(file_, 0);
        const auto body =
            std::make_shared<SubSource>(std::make_shared<FileContent>(file_, aside + bodyLength),
                                        CheckedRange{aside, bodyLength});
        Copier copier(*file_);
        if (const auto written = writeAside(copier, image, aside); !written.ok()) {
            (void)file_->setSize(status.size);
            return Failure(written.status());
        }
        const bool isSettled = settle(copier, image, *body).ok();
        source->setSize(isSettled ? end : aside + bodyLength);
        return Content{source, isSettled ? kForkHeadLength : aside};
    }

    Result<void> flush() override { return file_->synchronise(); }
    bool isOf(const Located& file, ForkKind fork) const override {
        return fork == ForkKind::data && file.birth == object_.birth &&
               file.status.isSameObject(object_.status);
    }

  private:
    static constexpr std::uint64_t kLargestOffset = 0x7FFFFFFF;

    Result<void> writeAside(Copier& copier, const ForkImage& image, std::uint64_t aside) {
        OSA_CHECK(copier.copy(*image.data, aside));
        OSA_CHECK(copier.copy(*image.map, aside + image.data->size()));
        OSA_CHECK(file_->synchronise());
        return copier.write(0, image.header(aside));
    }
    /// Each step only when the one before is on disk: a crash must not mix them.
    Result<void> settle(Copier& copier, const ForkImage& image, const ByteSource& body) {
        OSA_CHECK(file_->synchronise());
        OSA_CHECK(copier.copy(*image.reserved, ForkImage::kHeaderLength));
        OSA_CHECK(copier.copy(body, kForkHeadLength));
        OSA_CHECK(file_->synchronise());
        OSA_CHECK(copier.write(0, image.header(kForkHeadLength)));
        if (file_->synchronise().ok()) (void)file_->setSize(kForkHeadLength + body.size());
        return {};
    }

    File file_;
    Located object_;  // when it was opened
    WriteAccess access_;
};

Result<std::unique_ptr<posix::WritableFile>> openDataFork(const Located& object) {
    using Access = posix::WritableFile::Access;
    OSA_TRY(auto file, posix::WritableFile::open(object.path(), Access::readingToo));
    OSA_TRY(const posix::FileStatus status, file->status());
    if (!object.isStill(status)) return Failure(fnfErr);
    return file;
}

}  // namespace

Result<ForkKind> forkOfName(UniCharCount length, const UniChar* name) {
    if (length > 0 && name == nullptr) return Failure(errFSBadForkName);
    return forkNamed({reinterpret_cast<const char16_t*>(name), length});
}

Result<std::unique_ptr<ForkPlace>> openForkPlace(const Located& file, ForkKind fork) {
    using Place = std::unique_ptr<ForkPlace>;
    if (!file.status.isRegular()) return Failure(notAFileErr);
    OSA_TRY(WriteAccess access, WriteAccess::claim(file, fork, Sharing::alone));
    if (fork == ForkKind::resource) {
        OSA_CHECK(mayWriteResourceFork(file));
        return Place(std::make_unique<ResourceForkPlace>(std::move(access)));
    }
    OSA_TRY(File opened, openDataFork(file));
    return Place(std::make_unique<DataForkPlace>(std::move(opened), file, std::move(access)));
}

Result<void> createDataForkMap(const FSRef& file, const ForkImage& image) {
    OSA_TRY(const Located object, locate(&file));
    if (!object.status.isRegular()) return Failure(dupFNErr);
    if (object.status.size > 0) return Failure(dupFNErr);
    OSA_TRY(const WriteAccess access, WriteAccess::claim(object, ForkKind::data, Sharing::alone));
    OSA_TRY(const auto opened, openDataFork(object));
    const auto written = Copier(*opened).copy(*image.fork(), 0);
    if (!written.ok()) (void)opened->setSize(0);
    return written.ok() ? opened->close() : written;
}

}  // namespace osa
