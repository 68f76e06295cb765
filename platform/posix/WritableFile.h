// A regular file that is changed in place. Failures as in FileSystem.h; a refusal to write is
// wrPermErr.
#pragma once

#include <memory>

#include "platform/posix/FileSystem.h"

namespace osa::posix {

class WritableFile {
  public:
    enum class Access { writing, readingToo };
    /// notAFileErr: a folder, a link, a device and the like.
    static Result<std::unique_ptr<WritableFile>> open(const std::string& path, Access access);
    /// A new file without a name, which goes when it is closed, in $TMPDIR or /tmp.
    static Result<std::unique_ptr<WritableFile>> temporary();

    virtual ~WritableFile() = default;
    virtual Result<FileStatus> status() const = 0;
    /// eofErr when the file ends before.
    virtual Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const = 0;
    /// The bytes between the end and a later `offset` become zeros. `done` counts what was written,
    /// also before a failure.
    virtual Result<void> write(std::uint64_t offset, ByteSpan bytes, std::uint64_t& done) = 0;
    virtual Result<void> setSize(std::uint64_t size) = 0;
    virtual Result<void> synchronise() = 0;
    /// Some file systems tell only now that a write has failed. Nothing else may follow.
    virtual Result<void> close() = 0;
};

}  // namespace osa::posix
