// What the folder around an object has of fork stores, remembered from object to object.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/References.h"

namespace osa {

/// The folder-level stores of one folder.
struct FolderStores {
    bool appleDouble = false;  ///< .AppleDouble
    // These only where they are no links.
    bool rsrc = false;          ///< .rsrc
    bool finf = false;          ///< .finf
    bool resource = false;      ///< .resource
    bool finderInfo = false;    ///< .finderinfo
    bool percentNames = false;  ///< some name begins with "%"
    /// Folders upward that have a __MACOSX folder, the nearest first.
    std::vector<std::string> macosxRoots;
};

/// The folder around one object during one question: asks for its status once at most.
class FolderSurroundings {
  public:
    explicit FolderSurroundings(std::string_view folder) : folder_(folder) {}

    std::string_view path() const { return folder_; }
    Result<posix::FileStatus> status();
    /// Costs a scan of the folder the first time, and nothing but its status while it stays as it
    /// is.
    Result<FolderStores> stores();

  private:
    const std::string_view folder_;  // weak
    std::optional<posix::FileStatus> status_;
};

}  // namespace osa
