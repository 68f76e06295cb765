// Expands compressed resources: those with attribute bit 0 whose data begins with the signature.
#pragma once

#include <CoreServices/MacTypes.h>

#include <vector>

#include "platform/base/ByteReader.h"
#include "platform/base/Result.h"

namespace osa {

/// The attribute bit of compressed resources. Some plain resources carry it too: the signature
/// decides.
inline constexpr UInt8 kResourceCompressed = 0x01;

/// No expanded resource is longer: what the format's 24-bit offsets could have held uncompressed.
inline constexpr UInt32 kLargestExpansion = 16u << 20;

/// Whether `data` begins with the signature and is long enough for the header behind it.
bool isCompressedData(ByteSpan data);

/// The length that the header of compressed data promises; 0 when it is no such header.
UInt32 expandedLength(ByteSpan data);

/// The resource as it was before it was compressed: exactly the promised length, or CantDecompress
/// for anything malformed, longer than kLargestExpansion, or made for a decompressor that is not
/// built in.
Result<std::vector<std::byte>> expandResource(ByteSpan data);

}  // namespace osa
