// The walk, breadth first: a moved object is seldom far from where it was.
#include "platform/aliases/AliasWalk.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <deque>
#include <mutex>
#include <unordered_set>

#include "platform/files/References.h"

namespace osa {
namespace {

class Walk {
  public:
    Walk(WalkBudget& budget, const VisitObject& visit) : budget_(budget), visit_(visit) {}

    bool run(const std::string& start) {
        const auto status = posix::status(start, posix::Follow::no);
        if (!isSeen(status) || !status->isFolder()) return !isDisturbed_;
        device_ = status->device;
        enqueue(start, *status);
        while (!folders_.empty()) {
            const std::string folder = std::move(folders_.front());
            folders_.pop_front();
            enqueueFolderAbove(folder);
            if (!visitContent(folder)) break;
        }
        return !isDisturbed_;
    }

  private:
    template <typename Value>
    bool isSeen(const Result<Value>& result) {
        if (result.ok()) return true;
        const OSStatus status = result.status();
        isDisturbed_ |= status == ioErr || status == tmfoErr || status == memFullErr;
        return false;
    }

    /// A folder that is mounted at a second place is not gone through again.
    void enqueue(std::string path, const posix::FileStatus& status) {
        if (status.device == device_ && met_.insert(status.inode).second)
            folders_.push_back(std::move(path));
    }

    void enqueueFolderAbove(const std::string& folder) {
        if (folder == "/") return;
        const std::size_t slash = folder.rfind('/');
        std::string above = slash == 0 ? "/" : folder.substr(0, slash);
        const auto status = posix::status(above, posix::Follow::no);
        if (isSeen(status)) enqueue(std::move(above), *status);
    }

    bool visitContent(const std::string& folder) {
        auto names = posix::DirectoryReader::open(folder, posix::Follow::no);
        if (!isSeen(names)) return true;
        for (auto name = names->next(); isSeen(name) && !name->empty(); name = names->next()) {
            if (!budget_.spend()) return false;
            const std::string path = joinPath(folder, *name);
            const auto status = posix::status(path, posix::Follow::no);
            // A folder is on one volume; what it holds may bear other device numbers in an overlay.
            if (!isSeen(status) || (status->isFolder() && status->device != device_)) continue;
            if (!visit_(folder, *name, *status)) return false;
            if (status->isFolder()) enqueue(path, *status);
        }
        return true;
    }

    WalkBudget& budget_;
    const VisitObject& visit_;
    bool isDisturbed_ = false;
    std::uint64_t device_ = 0;
    std::deque<std::string> folders_;  // still to be gone through
    std::unordered_set<std::uint64_t> met_;
};

constexpr std::chrono::seconds kLostFor{60};
constexpr std::size_t kMostLost = 256;

struct LostObjects {
    struct Entry {
        SoughtObject object;
        std::chrono::steady_clock::time_point since;
    };
    std::mutex lock;
    std::deque<Entry> entries;  // the oldest first
};

LostObjects& lostObjects() {
    static LostObjects shared;
    return shared;
}

}  // namespace

bool WalkBudget::isSpent() const {
    return objects_ >= kMostObjects || std::chrono::steady_clock::now() - start_ >= kLongest;
}

bool WalkBudget::spend() {
    if (objects_ >= kMostObjects) return false;
    if (++objects_ % kClockInterval != 0) return true;
    return std::chrono::steady_clock::now() - start_ < kLongest;
}

bool walkOutward(const std::string& start, WalkBudget& budget, const VisitObject& visit) {
    return Walk(budget, visit).run(start);
}

void rememberLost(const SoughtObject& object) {
    LostObjects& lost = lostObjects();
    const std::lock_guard guard(lost.lock);
    if (lost.entries.size() == kMostLost) lost.entries.pop_front();
    lost.entries.push_back({object, std::chrono::steady_clock::now()});
}

bool isKnownAsLost(const SoughtObject& object) {
    LostObjects& lost = lostObjects();
    const std::lock_guard guard(lost.lock);
    const auto now = std::chrono::steady_clock::now();
    while (!lost.entries.empty() && now - lost.entries.front().since > kLostFor)
        lost.entries.pop_front();
    return std::ranges::find(lost.entries, object, &LostObjects::Entry::object) !=
           lost.entries.end();
}

}  // namespace osa
