// A lock on a folder that the processes of this system share by agreement.
#pragma once

#include <string>

#include "platform/posix/UniqueFd.h"

namespace osa::posix {

/// Held until it goes. Others are waited for, two seconds at most; after that, and where a folder
/// cannot be locked, the work goes on without: no failure. No fault points, for the same reason.
class FolderLock {
  public:
    explicit FolderLock(const std::string& folder);
    FolderLock(FolderLock&&) noexcept = default;
    ~FolderLock();

  private:
    UniqueFd descriptor_;
};

}  // namespace osa::posix
