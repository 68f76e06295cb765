// The thread's chain of open resource files.
#include "platform/resources/ResourceThread.h"

#include <CoreServices/MacMemory.h>

#include <algorithm>

namespace osa {

ResourceThread& ResourceThread::mine() {
    thread_local ResourceThread state;
    return state;
}

void ResourceThread::makeRoom() {
    std::erase_if(chain_, [](const auto& entry) { return entry.expired(); });
    if (chain_.size() == chain_.capacity()) chain_.reserve(2 * chain_.size() + 1);
}

void ResourceThread::use(const OpenResourceFilePtr& file) {
    const bool known =
        std::ranges::any_of(chain_, [&](const auto& entry) { return entry.lock() == file; });
    if (!known) {
        makeRoom();
        chain_.push_back(file);
    }
    current_ = file;
}

void ResourceThread::forget(const OpenResourceFilePtr& file) {
    const auto place =
        std::ranges::find_if(chain_, [&](const auto& entry) { return entry.lock() == file; });
    OpenResourceFilePtr older;
    if (place != chain_.end()) {
        for (auto next = place; next != chain_.begin() && !older;) older = (--next)->lock();
        chain_.erase(place);
    }
    if (current() == file) current_ = older;
}

std::vector<OpenResourceFilePtr> ResourceThread::chain() const {
    std::vector<OpenResourceFilePtr> files;
    for (auto entry = chain_.rbegin(); entry != chain_.rend(); ++entry)
        if (auto file = entry->lock()) files.push_back(std::move(file));
    return files;
}

OpenResourceFilePtr ResourceThread::home(Handle handle) const {
    // The mark answers for ordinary handles without a search.
    if (handle == nullptr || (HGetState(handle) & kHandleResourceMask) == 0) return nullptr;
    for (auto entry = chain_.rbegin(); entry != chain_.rend(); ++entry)
        if (auto file = entry->lock(); file && file->find(handle) != nullptr) return file;
    return nullptr;
}

}  // namespace osa
