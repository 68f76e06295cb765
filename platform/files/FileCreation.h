// Making files, for this room and those above.
#pragma once

#include <CoreServices/Files.h>

#include "platform/files/References.h"

namespace osa {

/// What to make where; the FSCatalogInfo may be null when no field of it is named.
struct NewFile {
    const FSRef* parent = nullptr;
    const UniChar* name = nullptr;
    UniCharCount nameLength = 0;
    FSCatalogInfoBitmap whichInfo = 0;
    const FSCatalogInfo* info = nullptr;
};

/// FSCreateFileUnicode; `finish`, given the new file, may add to it. When any of this fails the
/// file and its side file are removed again.
Result<FSRef> createFile(const NewFile& file, Result<void> (*finish)(const FSRef&) = nullptr);

}  // namespace osa
