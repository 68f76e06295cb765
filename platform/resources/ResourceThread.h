// What the Resource Manager keeps for each thread, and the shape of its published calls.
#pragma once

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacTypes.h>

#include <memory>
#include <new>
#include <vector>

#include "platform/base/Result.h"
#include "platform/resources/OpenResourceFile.h"

namespace osa {

using OpenResourceFilePtr = std::shared_ptr<OpenResourceFile>;

/// The files are kept alive by the table of reference numbers alone: what another thread closed is
/// gone here as well, and its number may come back for another file without being taken for the old
/// one.
class ResourceThread {
  public:
    static ResourceThread& mine();

    OSErr error = noErr;
    bool loads = true;

    /// The current file; null when there is none or it has been closed.
    OpenResourceFilePtr current() const { return current_.lock(); }
    /// The next file that is new to the thread will need no memory.
    void makeRoom();
    /// Makes the file current and, if it is new to the thread, the latest of its chain.
    void use(const OpenResourceFilePtr& file);
    void useNone() { current_.reset(); }
    /// Takes the file out of the chain; was it current, the next older one is.
    void forget(const OpenResourceFilePtr& file);

    /// The files still open, latest first.
    std::vector<OpenResourceFilePtr> chain() const;
    /// The file that the resource handle belongs to; null when it is no resource's.
    OpenResourceFilePtr home(Handle handle) const;

  private:
    std::weak_ptr<OpenResourceFile> current_;
    std::vector<std::weak_ptr<OpenResourceFile>> chain_;  // latest last
};

/// The edge of every published call: runs `work`, which answers a Result, sets ResError from it and
/// gives its value, or `failed`. Nothing is thrown past it.
template <typename T, typename Work>
T resourceCall(T failed, Work&& work) {
    ResourceThread& thread = ResourceThread::mine();
    try {
        auto result = work(thread);
        thread.error = static_cast<OSErr>(result.status());
        return result ? *std::move(result) : failed;
    } catch (const std::bad_alloc&) {
        thread.error = memFullErr;
        return failed;
    }
}

/// The same for calls that give nothing back.
template <typename Work>
void resourceCall(Work&& work) {
    resourceCall(false, [&](ResourceThread& thread) -> Result<bool> {
        OSA_CHECK(work(thread));
        return true;
    });
}

/// Runs `work` on the file and the map's entry of a resource's handle; resNotFound for other
/// handles.
template <typename Work>
auto withResource(ResourceThread& thread, Handle handle, Work&& work)
    -> decltype(work(*OpenResourceFilePtr(), *std::unique_ptr<Resource>())) {
    const OpenResourceFilePtr file = thread.home(handle);
    if (!file) return Failure(resNotFound);
    return work(*file, *file->find(handle));
}

}  // namespace osa
