// The interface behind which every way of keeping forks and Finder information on Unix lies.
//
// A store looks for what it keeps of one object and says on which files its answer rests
// (witnesses), so that the answer can be used again for as long as those stay as they were.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/base/ByteSource.h"
#include "platform/files/References.h"
#include "platform/files/formats/FinderInfoBytes.h"

namespace osa {

/// Where a resource fork lies: in memory, or a part of a file that is opened when it is needed.
struct StoredFork {
    std::shared_ptr<const ByteSource> bytes;  ///< null: in the file
    std::string path;
    posix::FileStatus file;
    CheckedRange range;

    std::uint64_t size() const { return bytes != nullptr ? bytes->size() : range.length; }
    /// fnfErr when the file has changed since it was found.
    Result<std::shared_ptr<const ByteSource>> open() const;
};

/// A path and what was there: an answer holds while the same is there.
struct Witness {
    std::string path;
    std::optional<posix::FileStatus> seen;  ///< none: there was nothing
};

/// Where one part lies, for writing it there again.
struct PartPlace {
    enum class Form {
        bare,
        zeroEnded,  ///< a zero byte behind it
        afpInfo,
        appleDouble
    };
    Form form = Form::bare;
    const char* attribute = nullptr;  ///< of the object; null: in a file
    std::size_t witness = 0;          ///< number of the witness that is the file
    bool isBlank = false;             ///< an empty resource fork
};

struct StoredParts {
    FinderInfoBytes finderInfo{};                    ///< blank: none kept
    std::shared_ptr<const StoredFork> resourceFork;  ///< null: none kept; may be empty
    // All places, in the order in which they count. Blank Finder information has none.
    std::vector<PartPlace> infoPlaces;
    std::vector<PartPlace> forkPlaces;
    std::vector<Witness> witnesses;

    /// One of several places' forks: the first counts that is not empty, else the first.
    void addFork(std::shared_ptr<const StoredFork> fork, PartPlace place);
    void addFinderInfo(const FinderInfoBytes& info, PartPlace place);
};

class FolderSurroundings;

class ForkStore {
  public:
    virtual ~ForkStore() = default;
    /// Looks for the parts of `object`, which is no link and not the root folder. Nothing kept is
    /// no failure; a failure means that the system refused to tell.
    virtual Result<StoredParts> look(const Located& object, FolderSurroundings& around) const = 0;
};

/// All stores, in the order in which they are asked.
std::span<const ForkStore* const> forkStores();

// One of each, defined in the file that is named after it.
extern const ForkStore& extendedAttributes;
extern const ForkStore& dotUnderscoreFile;
extern const ForkStore& appleDoubleFolder;
extern const ForkStore& macosxFolder;
extern const ForkStore& rsrcFinfFolders;
extern const ForkStore& resourceFinderInfoFolders;
extern const ForkStore& percentFile;

/// Whether the iterator hides an object of this name because it keeps other objects' parts.
bool isSideFile(const std::string& folder, const std::string& name);

}  // namespace osa
