// The 32 bytes of Finder information as they are on disk (big-endian).
#pragma once

#include <CoreServices/Finder.h>

#include <array>
#include <cstddef>

#include "platform/base/ByteReader.h"

namespace osa {

/// Basic information in the first half, extended in the second.
using FinderInfoBytes = std::array<std::byte, 32>;

/// Copies up to 32 bytes, the rest zeros.
FinderInfoBytes finderInfoBytes(ByteSpan stored);
/// All zeros is what keepers of nothing write.
bool isBlank(const FinderInfoBytes& bytes);

/// Into host order; a folder's fields lie as in DInfo and DXInfo.
FinderInfo basicFinderInfo(const FinderInfoBytes& bytes, bool isFolder);
ExtendedFinderInfo extendedFinderInfo(const FinderInfoBytes& bytes, bool isFolder);

/// The reverse: puts one half into the bytes and leaves the other.
void setBasicFinderInfo(FinderInfoBytes& bytes, const FinderInfo& info, bool isFolder);
void setExtendedFinderInfo(FinderInfoBytes& bytes, const ExtendedFinderInfo& info, bool isFolder);

}  // namespace osa
