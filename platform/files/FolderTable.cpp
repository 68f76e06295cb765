// The tables of folders and of long names.
#include "platform/files/FolderTable.h"

#include <deque>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

/// Texts numbered in the order of their coming.
class TextPool {
  public:
    std::uint32_t intern(const std::string& text) {
        {
            const std::shared_lock guard(lock_);
            const auto found = numbers_.find(text);
            if (found != numbers_.end()) return found->second;
        }
        const std::unique_lock guard(lock_);
        const auto [place, isNew] =
            numbers_.try_emplace(text, static_cast<std::uint32_t>(texts_.size()));
        if (isNew) texts_.push_back(&place->first);
        return place->second;
    }

    const std::string* at(std::uint32_t number) const {
        const std::shared_lock guard(lock_);
        return number < texts_.size() ? texts_[number] : nullptr;
    }

  private:
    mutable std::shared_mutex lock_;
    std::unordered_map<std::string, std::uint32_t> numbers_;
    std::deque<const std::string*> texts_;  // the keys above, which do not move
};

/// How a folder's path is spelled otherwise: what it led to when it was last looked up.
struct Spelling {
    FolderIndex folder = 0;
    bool isReal = false;  // no link on the way, so nothing to check again
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};

struct Spellings {
    std::shared_mutex lock;
    std::unordered_map<std::string, Spelling> known;
};

TextPool& folders() {
    static TextPool shared;
    return shared;
}

TextPool& names() {
    static TextPool shared;
    return shared;
}

Spellings& spellings() {
    static Spellings shared;
    return shared;
}

bool findSpelling(const std::string& path, Spelling& found) {
    Spellings& shared = spellings();
    const std::shared_lock guard(shared.lock);
    const auto entry = shared.known.find(path);
    if (entry == shared.known.end()) return false;
    found = entry->second;
    return true;
}

}  // namespace

FolderIndex internRealFolder(const std::string& path) {
    return folders().intern(path);
}

Result<FolderIndex> internFolder(const std::string& path) {
    Spelling spelling;
    const bool known = findSpelling(path, spelling);
    if (known && spelling.isReal) return spelling.folder;
    // A link on the way may lead elsewhere by now.
    OSA_TRY(const posix::FileStatus status, posix::status(path, posix::Follow::yes));
    if (known && spelling.device == status.device && spelling.inode == status.inode) {
        return spelling.folder;
    }
    OSA_TRY(const std::string real, posix::realPath(path));
    spelling = {internRealFolder(real), real == path, status.device, status.inode};
    Spellings& shared = spellings();
    const std::unique_lock guard(shared.lock);
    shared.known[path] = spelling;
    return spelling.folder;
}

const std::string* folderPath(FolderIndex index) {
    return folders().at(index);
}
std::uint32_t internLongName(const std::string& name) {
    return names().intern(name);
}
const std::string* longName(std::uint32_t index) {
    return names().at(index);
}

}  // namespace osa
