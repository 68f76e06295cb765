// A file's new content, which lies beside it until it takes its place in one step.
#pragma once

#include <memory>
#include <string>

#include "platform/posix/FileSystem.h"
#include "platform/posix/UniqueFd.h"

namespace osa::posix {

/// Whoever opens the path finds the old or the new content, also after a crash. Meanwhile the other
/// of them lies beside it under a name that begins with "._.".
class FileReplacement {
  public:
    /// Writes `content`, which may rest on the file that is replaced. It gets the permission bits
    /// of `like`, the replaced file's attributes, and owner and group of `like` where the system
    /// allows; afpAccessDenied when it does not and others could then read or write the file than
    /// before.
    static Result<std::unique_ptr<FileReplacement>> prepare(const std::string& path,
                                                            const ByteSource& content,
                                                            const FileStatus& like);
    /// The same for a file that is not there.
    static Result<std::unique_ptr<FileReplacement>> prepareNew(const std::string& path,
                                                               const ByteSource& content,
                                                               const FileStatus& like);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    /// Nothing is left beside the file.
    ~FileReplacement();

    const std::string& path() const { return target_; }
    /// dupFNErr: something, if only a link, has a new file's name.
    Result<void> takePlace();
    /// Undoes takePlace. No fault points: whatever made the work fail, this is tried. The old file
    /// gets its name back, or is written again where the file system could not keep it.
    void giveBack();

  private:
    enum class Stage { waiting, placedNew, oldIsBeside, oldIsOpen, done };
    FileReplacement(const std::string& path, const FileStatus& like, bool isNew);
    static Result<std::unique_ptr<FileReplacement>> make(const std::string& path,
                                                         const ByteSource& content,
                                                         const FileStatus& like, bool isNew);
    Result<void> create();
    Result<void> fill(const ByteSource& content);
    Result<void> resemble();
    void giveToOwner();
    Result<void> setMode(std::uint32_t made);
    Result<void> openFolder();
    void synchroniseFolder();
    Result<void> takeFreePlace();
    Result<void> replace();
    Result<void> replaceWithoutExchange();
    void writeAgain();

    const std::string target_;
    const FileStatus like_;
    const bool isNew_;
    std::string beside_;
    Stage stage_ = Stage::done;
    UniqueFd descriptor_;
    UniqueFd folder_;  // so that a change of its names can be made to last
    std::shared_ptr<const OpenedFile> old_;
};

}  // namespace osa::posix
