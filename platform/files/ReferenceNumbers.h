// The one number space of open forks and open resource files.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <memory>

#include "platform/base/Result.h"

namespace osa {

/// Whatever is open under a number; each room that opens things derives its own, names it as
/// T::kKind and gets it back by that.
struct OpenFile {
    enum class Kind { fork, resourceFile };

    explicit OpenFile(Kind itsKind) : kind(itsKind) {}
    virtual ~OpenFile() = default;
    /// Makes what was changed so far last; by default there is nothing.
    virtual Result<void> flush() { return {}; }

    const Kind kind;
};

/// Gives `file` the lowest free positive number; tmfoErr when all are in use.
Result<SInt16> addOpenFile(std::shared_ptr<OpenFile> file);
/// Null for a number under which nothing of the kind is open. The file stays alive as long as the
/// caller holds it, even if another thread closes the number.
std::shared_ptr<OpenFile> findOpenFile(SInt16 number, OpenFile::Kind kind);
/// Of whatever kind.
std::shared_ptr<OpenFile> findOpenFile(SInt16 number);
template <typename T>
std::shared_ptr<T> findOpenFile(SInt16 number) {
    return std::static_pointer_cast<T>(findOpenFile(number, T::kKind));
}
/// False when nothing has the number, or something else by now.
bool removeOpenFile(SInt16 number, const OpenFile& file) noexcept;

}  // namespace osa
