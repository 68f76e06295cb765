// Leaf names between the disk's UTF-8 and the Mac's UTF-16, where "/" and ":" change places.
#pragma once

#include <CoreServices/MacTypes.h>

#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace osa {

/// For FSMakeFSRefUnicode: bdNamErr, errFSMissingName or errFSNameTooLong for what is no name.
Result<std::string> leafFromUnicode(const UniChar* units, UniCharCount length);
/// bdNamErr: no UTF-8, or over 255 units.
Result<HFSUniStr255> unicodeFromLeaf(std::string_view leaf);

/// The Mac Roman form for an FSSpec; bdNamErr when it has none of 63 bytes or fewer.
Result<std::string> macRomanFromLeaf(std::string_view leaf);
std::string leafFromMacRoman(std::string_view name);

}  // namespace osa
