// AfpInfo: the 60-byte record in which SMB servers keep Finder information.
//
//   0  4  'AFP' and a zero byte       12  4  backup date
//   4  4  version                     16 32  Finder information
//   8  4  reserved                    48 12  ProDOS information, reserved
#pragma once

#include <optional>

#include "platform/files/formats/FinderInfoBytes.h"

namespace osa {

/// None when the bytes are no such record. Bytes behind it (servers add a zero) mean nothing.
std::optional<FinderInfoBytes> parseAfpInfo(ByteSpan bytes);

}  // namespace osa
