// Records in handles: their bytes, and how they are brought up to date.
#pragma once

#include <CoreServices/Aliases.h>

#include <optional>

#include "platform/aliases/AliasPlaces.h"
#include "platform/aliases/AliasRecord.h"
#include "platform/base/ByteReader.h"

namespace osa {

/// All that the handle holds, until it is resized; nothing of a null or an empty one.
ByteSpan aliasBytes(AliasHandle alias);
/// The record in the handle; paramErr when it holds none.
Result<AliasRecord> aliasRecord(AliasHandle alias);

/// Replaces the record in the handle and keeps what the application has put behind it; whether any
/// byte is another now. memFullErr or pathTooLongErr leave the handle as it was.
Result<bool> storeRecord(AliasHandle alias, const AliasRecord& record);

/// What the record must be to tell the truth of `target`; none when it tells nothing else. What a
/// record does not tell is not untrue. `fromFile`: the file that holds the alias, null if unknown.
Result<std::optional<AliasRecord>> correctedRecord(const AliasRecord& recorded,
                                                   const Located& target, const Located* fromFile);

}  // namespace osa
