// Stored scripts of every language: a component's bytes and the trailer that names the component.
//
//   [line that begins "#!"]  body  [pad]  subtype:4  version:2  length:2  FA DE DE AD
//
// `length` is that of the trailer, the pad byte included, which makes the number of bytes even.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/base/ByteReader.h"
#include "platform/base/Result.h"

namespace osa {

struct StoredScript {
    OSType subType = 0;
    std::uint16_t version = 0;
    ByteSpan body;  ///< a view of what was parsed, without line, pad and trailer
};

/// The version that is written, the only one that there is.
inline constexpr std::uint16_t kStoredScriptVersion = 1;

/// Whether the bytes end in the mark of a stored script, be the rest of the trailer as it may.
bool endsAsStoredScript(ByteSpan bytes);
/// errOSABadStorageType: no trailer. errOSACorruptData: there is not room for the length that the
/// trailer gives itself, or no trailer is that long. errOSADataFormatTooNew: a later version.
Result<StoredScript> parseStoredScript(ByteSpan bytes);
/// `body` with pad and trailer.
std::vector<std::byte> makeStoredScript(ByteSpan body, OSType subType);

}  // namespace osa
