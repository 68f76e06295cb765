// What the stores that use side files share.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "platform/files/stores/ForkStore.h"

namespace osa {

/// The parts kept in an AppleDouble side file. A small one is read whole and served from memory. No
/// file, or one of another kind: nothing kept. `mayBeRefused`: a file that may not be read counts
/// as none, too.
Result<StoredParts> readAppleDoubleSideFile(const std::string& path, bool mayBeRefused);

/// Changes the object's "._" side file to what `edited` makes of the one that is there, or makes
/// `fresh` when there is none. dupFNErr: something else has its name, to which a paramErr of
/// `edited` testifies. After a failure all is as it was. The caller holds partsLock().
Result<void> writeDotUnderscoreFile(
    const Located& object,
    const std::function<
        Result<std::shared_ptr<const ByteSource>>(std::shared_ptr<const ByteSource> old)>& edited,
    const std::function<std::shared_ptr<const ByteSource>()>& fresh);

/// Held while an object's parts are read, changed and written back: two threads that write one part
/// each must not undo each other's.
std::mutex& partsLock();

/// Whether a failure to open a side file only says that there is none.
bool meansAbsent(OSStatus status, bool mayBeRefused);

}  // namespace osa
