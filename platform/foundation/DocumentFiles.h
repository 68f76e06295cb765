// Reading whole files that URLs name, and text in unknown encodings. Nothing here throws.
#pragma once

#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#include <string>
#include <vector>

#include "platform/base/ByteReader.h"
#include "platform/base/Result.h"

namespace osa {

/// Larger property lists, texts and documents are not read.
inline constexpr std::uint64_t kLargestDocument = 64u << 20;

/// The POSIX path of a file URL; fnfErr when it has none.
Result<std::string> pathOfURL(CFURLRef url);

/// fileBoundsErr for more than kLargestDocument.
Result<std::vector<std::byte>> readDocument(const std::string& path);

/// The text as NSString reads it: by its mark, else in the system encoding. Empty when malformed.
CFRef<CFStringRef> plainTextString(ByteSpan bytes);

/// The text of a document: rich text, the folder form of it, or plain text. Empty when unreadable.
CFRef<CFStringRef> documentString(const std::string& path);

}  // namespace osa
