// How the folder of a bundle is laid out on disk.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace osa {

/// The folders and files of one bundle; paths without a trailing slash.
struct BundleLayout {
    /// The bundle folder itself.
    std::string root;
    /// Where Info.plist may be, in the order it is looked for; PkgInfo may lie in the root as well.
    std::vector<std::string> supportFolders;
    /// For resources; it need not exist.
    std::string resources;
    /// Where the program file may be, in the order it is looked for.
    std::vector<std::string> programFolders;
};

/// The layout of the folder at `path`, or nothing when it is no bundle (CFBundle.h says when it is
/// one).
std::optional<BundleLayout> findBundleLayout(const std::string& path);

/// The bundle that a program lies in as it should: in one of its program folders. A flat one counts
/// only by its extension, for in a folder of downloads or in /tmp anybody's Info.plist may lie
/// beside a program. `program` is absolute, without links, and need not exist.
std::optional<BundleLayout> enclosingBundle(const std::string& program);

/// The last component of a path, and what follows its last dot (empty when nothing does).
std::string leafName(const std::string& path);
std::string nameExtension(const std::string& path);

}  // namespace osa
