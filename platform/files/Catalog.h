// Filling catalog records, for the calls that ask about one object and those that ask about many.
#pragma once

#include <CoreServices/Files.h>

#include "platform/files/References.h"

namespace osa {

/// Where FSGetCatalogInfo and its like put their answers; each may be null.
struct CatalogTargets {
    FSCatalogInfo* info = nullptr;
    HFSUniStr255* name = nullptr;
    FSSpec* spec = nullptr;
    FSRef* parent = nullptr;
};

/// Writes what was asked for. Targets are written in part when a failure comes between.
Result<void> fillCatalog(const Located& object, FSCatalogInfoBitmap which,
                         const CatalogTargets& targets);

/// Unix time as seconds since 1904 and 1/65536 seconds; zero for earlier dates.
UTCDateTime utcDateTime(posix::Time time);
posix::Time unixTime(UTCDateTime date);

}  // namespace osa
