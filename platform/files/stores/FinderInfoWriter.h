// Writing Finder information to where it is kept.
#pragma once

#include "platform/files/References.h"

namespace osa {

/// Writes the halves that are not null and keeps the other, in the place where the object's Finder
/// information was found, else in a "._" side file. Nothing is written when it is so already.
/// unimpErr: neither file nor folder, or the root folder; dupFNErr: the side file's name is
/// another object's; afpAccessDenied, wPrErr and the like as the system says. After a failure all
/// is as it was.
Result<void> writeFinderInfo(const FSRef* ref, const FinderInfo* basic,
                             const ExtendedFinderInfo* extended);

}  // namespace osa
