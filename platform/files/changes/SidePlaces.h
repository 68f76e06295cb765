// The names beside an object under which the stores keep what belongs to it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"

namespace osa {

/// Each way of keeping something in a file of its own; the places are in SidePlaces.cpp.
enum class Keeping {
    dotUnderscore,
    appleDouble,
    rsrc,
    finf,
    resource,
    finderInfo,
    percent,
    macosx,
    macosxFolder  ///< of a folder: where the side files lie of what is in it
};

/// A side file that is there.
struct SideFile {
    Keeping how = Keeping::dotUnderscore;
    std::string path;
    std::string root;  ///< the folder that has the __MACOSX folder

    /// The place of the same kind for an object that is called `name` in `folder`.
    std::string pathFor(std::string_view folder, std::string_view name) const;
};

/// All side files of the object that has, or may get, this name. A file that has a side file's name
/// without being one is none, nor is one to which the way leads over a link.
Result<std::vector<SideFile>> sideFilesOf(std::string_view folder, std::string_view name,
                                          bool isFolder);

/// The names in a folder that holds nothing else than side files, and nothing in them but what
/// AppleDouble says belongs to an object; fBsyErr when it does.
Result<std::vector<std::string>> sideFilesAlone(const std::string& folder);
/// Whether there are only side files in a folder below __MACOSX, and folders of such.
Result<bool> isShadow(const std::string& folder);

}  // namespace osa
