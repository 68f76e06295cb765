// Writing Finder information to where it is kept.
#pragma once

#include "platform/files/formats/FinderInfoBytes.h"
#include "platform/files/stores/PartHolders.h"

namespace osa {

/// Makes ready to write the halves that are not null and to keep the other, in the place where the
/// object's Finder information was found, else in a "._" side file. Nothing is written when it is
/// so already. unimpErr: neither file nor folder, or the root folder; dupFNErr: the side file's
/// name is another object's; afpAccessDenied, wPrErr and the like as the system says.
Result<void> changeFinderInfo(PartChanges& changes, const Located& object, const FinderInfo* basic,
                              const ExtendedFinderInfo* extended);

/// The same for all of it, also when it is so already.
Result<void> changeFinderInfo(PartChanges& changes, const Located& object,
                              const FinderInfoBytes& bytes);

/// The first, carried out: after a failure all is as it was.
Result<void> writeFinderInfo(const FSRef* ref, const FinderInfo* basic,
                             const ExtendedFinderInfo* extended);

}  // namespace osa
