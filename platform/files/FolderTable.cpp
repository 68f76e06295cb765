// The tables of folders and of long names.
#include "platform/files/FolderTable.h"

#include <array>
#include <atomic>
#include <bit>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

/// Texts numbered in the order of their coming. They are never moved, so that numbers, which come
/// far more often than new texts, are looked up without a lock.
class TextPool {
  public:
    std::uint32_t intern(const std::string& text) {
        {
            const std::shared_lock guard(lock_);
            const auto found = numbers_.find(text);
            if (found != numbers_.end()) return found->second;
        }
        const std::unique_lock guard(lock_);
        const std::uint32_t count = count_.load(std::memory_order_relaxed);
        const std::string*& slot = makeSlot(count);
        const auto [place, isNew] = numbers_.try_emplace(text, count);
        if (!isNew) return place->second;
        slot = &place->first;
        // What was written so far is there for whoever sees this count.
        count_.store(count + 1, std::memory_order_release);
        return count;
    }

    const std::string* at(std::uint32_t number) const {
        if (number >= count_.load(std::memory_order_acquire)) return nullptr;
        return runs_[runOf(number)][number - firstOf(runOf(number))];
    }

  private:
    // Run n holds as many texts as all runs before it and one more: the numbers from 2^n - 1 on.
    static unsigned runOf(std::uint32_t number) {
        return static_cast<unsigned>(std::bit_width(std::uint64_t{number} + 1)) - 1;
    }
    static std::uint64_t firstOf(unsigned run) { return (std::uint64_t{1} << run) - 1; }

    const std::string*& makeSlot(std::uint32_t number) {
        const std::uint64_t first = firstOf(runOf(number));
        auto& run = runs_[runOf(number)];
        if (run == nullptr) run = std::make_unique<const std::string*[]>(first + 1);
        return run[number - first];
    }

    std::shared_mutex lock_;  // of everything but what lies below the count
    std::unordered_map<std::string, std::uint32_t> numbers_;
    std::array<std::unique_ptr<const std::string*[]>, 32> runs_;  // the keys above
    std::atomic<std::uint32_t> count_{0};
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
        // The same folder may have been renamed, or another one have its number: it must still be
        // where the link led.
        const auto there = posix::status(*folderPath(spelling.folder), posix::Follow::no);
        if (there.ok() && there->isSameObject(status)) return spelling.folder;
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
