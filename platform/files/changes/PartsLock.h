// Who may change names and parts of objects, and how readers learn of changes.
//
// An object and its side files are changed in several steps. Threads of this process and other
// processes take turns; readers look without a lock, and look again when this process has changed
// something meanwhile.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/FolderLock.h"

namespace osa {

/// Held while an object's parts are read, changed and written back, or the object is renamed: two
/// that write one part each must not undo each other's. What is changed is looked up after it is
/// taken.
class PartsLock {
  public:
    /// `folder`: of the object; `other`: of the place where it goes.
    explicit PartsLock(std::string_view folder, std::string_view other = {});
    PartsLock(const PartsLock&) = delete;
    PartsLock& operator=(const PartsLock&) = delete;
    ~PartsLock();

  private:
    std::unique_lock<std::mutex> turn_;
    std::optional<posix::FolderLock> first_;
    std::optional<posix::FolderLock> second_;
    std::unique_lock<std::mutex> change_;
};

/// Held by a reader: this process changes nothing meanwhile.
class PartsPause {
  public:
    PartsPause();
    PartsPause(const PartsPause&) = delete;
    PartsPause& operator=(const PartsPause&) = delete;
    ~PartsPause();

  private:
    std::unique_lock<std::mutex> change_;
};

/// Counts this process's changes: each once when it begins and once when it is done.
std::uint64_t partChanges();
/// Whether what was seen since `count` is all of one time; for a thread that holds one of the above
/// it always is.
bool isSteadySince(std::uint64_t count);

}  // namespace osa
