// The files and attributes that hold an object's parts, and changing several of them so that all or
// none is changed.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/files/stores/ForkStore.h"

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

using ForkSource = std::shared_ptr<const ByteSource>;
/// What a holder's content becomes.
using HolderEdit = std::function<Result<ForkSource>(const ForkSource& old)>;

/// Changes that are taken back, the last first, unless they are kept.
class PartChanges {
  public:
    PartChanges() = default;
    PartChanges(const PartChanges&) = delete;
    PartChanges& operator=(const PartChanges&) = delete;
    ~PartChanges();

    /// dskFulErr: also when an attribute has not the room for it.
    Result<void> change(const PartHolder& holder, const HolderEdit& edit);
    /// Removes an attribute.
    Result<void> removeAttribute(const PartHolder& holder);
    /// Changes the object's "._" side file, or makes `fresh` when there is none or an empty one.
    /// dupFNErr: something else has its name, to which a paramErr of `edit` testifies.
    Result<void> changeSideFile(const Located& object, const HolderEdit& edit,
                                const std::function<ForkSource()>& fresh);
    void keep() { done_.clear(); }

  private:
    struct Done {
        std::string path;
        const char* attribute;
        ForkSource old;  // null: there was nothing
        posix::FileStatus status;
    };
    Result<void> changeFile(const std::string& path, const HolderEdit& edit);
    Result<void> changeAttribute(const PartHolder& holder, const HolderEdit& edit);
    static void undo(const Done& change);

    std::vector<Done> done_;
};

/// Held while an object's parts are read, changed and written back, or the object is renamed: two
/// threads that write one part each must not undo each other's.
std::mutex& partsLock();

}  // namespace osa
