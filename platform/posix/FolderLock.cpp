// Waiting for a folder's lock.
#include "platform/posix/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <time.h>

#include <cerrno>

namespace osa::posix {
namespace {

constexpr int kMostTries = 2000;
constexpr long kPause = 1'000'000;  // nanoseconds

}  // namespace

FolderLock::FolderLock(const std::string& folder)
    : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (!descriptor_.valid()) return;
    for (int left = kMostTries; left > 0; --left) {
        if (flock(descriptor_.get(), LOCK_EX | LOCK_NB) == 0) return;
        if (errno != EWOULDBLOCK && errno != EINTR) return;
        const struct timespec pause = {0, kPause};
        (void)nanosleep(&pause, nullptr);
    }
}

/// A child process made meanwhile has the descriptor, too: closing it would not let go.
FolderLock::~FolderLock() {
    if (descriptor_.valid()) (void)flock(descriptor_.get(), LOCK_UN);
}

}  // namespace osa::posix
