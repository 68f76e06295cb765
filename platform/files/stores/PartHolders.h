// The files and attributes that hold an object's parts, and changing several of them so that all or
// none is changed.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/files/stores/ForkStore.h"
#include "platform/posix/FileReplacement.h"

namespace osa {

enum class Part { finderInfo, resourceFork };

/// What holds one part of an object: a file, or an attribute of the object.
struct PartHolder {
    std::string path;  ///< of the file, or of the object
    const char* attribute = nullptr;
    PartPlace::Form form = PartPlace::Form::bare;
    bool isBlank = false;  ///< an empty resource fork
};

/// All holders of the part, in the order in which they count: of Finder information the first, of
/// forks the first that is not blank. One that does not count comes to light when those before it
/// are blanked.
Result<std::vector<PartHolder>> partHolders(const Located& object, Part part);

/// Whether the object has a "._" side file, or may get one: dupFNErr when the name is another
/// object's, errFSNameTooLong.
Result<void> mayHaveSideFile(const Located& object);

using ForkSource = std::shared_ptr<const ByteSource>;
/// What a holder's content becomes.
using HolderEdit = std::function<Result<ForkSource>(const ForkSource& old)>;

/// Changes of holders: made ready one by one, carried out in one go, taken back unless kept. Taking
/// back needs no memory and, where the file system can exchange names or give a file two, no room.
/// The caller holds a PartsLock.
class PartChanges {
  public:
    PartChanges() = default;
    PartChanges(const PartChanges&) = delete;
    PartChanges& operator=(const PartChanges&) = delete;
    ~PartChanges();

    /// dskFulErr: an attribute would be too long.
    Result<void> change(const PartHolder& holder, const HolderEdit& edit);
    /// Removes an attribute.
    Result<void> removeAttribute(const PartHolder& holder);
    /// Changes the object's "._" side file, or makes `fresh` when there is none or an empty one.
    /// dupFNErr: something else has its name, to which a paramErr of `edit` testifies.
    Result<void> changeSideFile(const Located& object, const HolderEdit& edit,
                                const std::function<ForkSource()>& fresh);
    /// In the order in which they were made ready; from one that fails on they are dropped.
    /// dskFulErr: also when an attribute has not the room for it.
    Result<void> carryOut();
    void keep();

  private:
    struct Step {
        std::unique_ptr<posix::FileReplacement> file;
        std::string path;  // of the object with the attribute
        const char* attribute = nullptr;
        std::vector<std::byte> old;
        std::optional<std::vector<std::byte>> value;  // none: no attribute any more
    };
    Result<void> changeFile(const std::string& path, const HolderEdit& edit);
    Result<void> changeAttribute(const PartHolder& holder, const HolderEdit& edit);
    Result<void> finishWith(const std::string& path);
    static Result<void> run(Step& step);
    static void undo(Step& step);

    std::vector<Step> steps_;
    std::size_t done_ = 0;
};

}  // namespace osa
