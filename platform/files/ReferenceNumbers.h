// The one number space of open forks and open resource files.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <memory>

#include "platform/base/Result.h"

namespace osa {

/// Whatever is open under a number; each room that opens things derives its own and casts back.
struct OpenFile {
    virtual ~OpenFile() = default;
};

/// Gives `file` the lowest free positive number; tmfoErr when all are in use.
Result<SInt16> addOpenFile(std::shared_ptr<OpenFile> file);
/// Null for a number that is not in use. The file stays alive as long as the caller holds it, even
/// if another thread closes the number.
std::shared_ptr<OpenFile> findOpenFile(SInt16 number);
/// False for a number that is not in use.
bool removeOpenFile(SInt16 number);

}  // namespace osa
