// The table of open files.
#include "platform/files/ReferenceNumbers.h"

#include <CoreServices/MacErrors.h>
#include <OSA/Diagnostics.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

namespace osa {
namespace {

struct OpenFileTable {
    std::shared_mutex lock;
    std::vector<std::shared_ptr<OpenFile>> files;  // number - 1 is the place
    std::vector<std::size_t> free;                 // a heap, the lowest place first
};

OpenFileTable& table() {
    static OpenFileTable shared;
    return shared;
}

}  // namespace

Result<SInt16> addOpenFile(std::shared_ptr<OpenFile> file) {
    OpenFileTable& open = table();
    const std::unique_lock guard(open.lock);
    std::size_t place = open.files.size();
    if (open.free.empty()) {
        if (place == std::numeric_limits<SInt16>::max()) return Failure(tmfoErr);
        // Room for its number when it goes, which must not fail.
        if (open.free.capacity() <= place) open.free.reserve(2 * place + 1);
        open.files.push_back(std::move(file));
    } else {
        std::ranges::pop_heap(open.free, std::greater<>());
        place = open.free.back();
        open.free.pop_back();
        open.files[place] = std::move(file);
    }
    return static_cast<SInt16>(place + 1);
}

std::shared_ptr<OpenFile> findOpenFile(SInt16 number) {
    OpenFileTable& open = table();
    const std::shared_lock guard(open.lock);
    if (number < 1 || static_cast<std::size_t>(number) > open.files.size()) return nullptr;
    return open.files[static_cast<std::size_t>(number) - 1];
}

std::shared_ptr<OpenFile> findOpenFile(SInt16 number, OpenFile::Kind kind) {
    auto file = findOpenFile(number);
    return file != nullptr && file->kind == kind ? file : nullptr;
}

bool removeOpenFile(SInt16 number, const OpenFile& file) noexcept {
    std::shared_ptr<OpenFile> closing;  // goes after the lock: closing may reach back here
    OpenFileTable& open = table();
    const std::unique_lock guard(open.lock);
    if (number < 1 || static_cast<std::size_t>(number) > open.files.size()) return false;
    const auto place = static_cast<std::size_t>(number) - 1;
    if (open.files[place].get() != &file) return false;
    closing = std::exchange(open.files[place], nullptr);
    open.free.push_back(place);
    std::ranges::push_heap(open.free, std::greater<>());
    return true;
}

}  // namespace osa

CFIndex OSAOpenFileCount(void) {
    osa::OpenFileTable& open = osa::table();
    const std::shared_lock guard(open.lock);
    return static_cast<CFIndex>(open.files.size() - open.free.size());
}
