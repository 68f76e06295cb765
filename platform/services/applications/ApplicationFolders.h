// The folders in which applications lie, and the identifiers that entries have from their place in
// them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace osa {

inline constexpr std::string_view kEntryExtension = ".desktop";

struct ApplicationFolder {
    std::string path;
    /// For bundles and entries, in the folder or in one directly below; otherwise for entries
    /// alone, seven folders down.
    bool holdsBundles = false;

    /// The folder itself counts.
    int depth() const { return holdsBundles ? 2 : 8; }
};

/// In the order in which LSFindApplicationForInfo searches them; they need not exist.
std::vector<ApplicationFolder> applicationFolders();

/// The identifier of the entry at a path: from its place below the first of the folders above that
/// it lies in, else its file name's.
std::string desktopEntryID(const std::string& path);

/// The last component of a path.
std::string leafOf(const std::string& path);
/// Whether two texts are UTF-8 and the same but for case and the form of their accents.
bool isSameButForCase(std::string_view first, std::string_view second);

}  // namespace osa
