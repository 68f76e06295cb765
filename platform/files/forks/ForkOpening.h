// Opening forks by name and permission.
#pragma once

#include <memory>
#include <string_view>

#include "platform/files/Forks.h"
#include "platform/files/forks/ForkContent.h"

namespace osa {

inline constexpr std::u16string_view kResourceForkName = u"RESOURCE_FORK";

/// errFSBadForkName: neither fork's.
Result<ForkKind> forkNamed(std::u16string_view name);

/// For FSOpenFork, with one of its permissions.
Result<std::shared_ptr<ForkContent>> openFork(const FSRef& ref, ForkKind fork, SInt8 permissions);

/// For FSDeleteFork.
Result<void> emptyFork(const FSRef& ref, ForkKind fork);

}  // namespace osa
