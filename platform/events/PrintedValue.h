// The customary notation of codes and of values that hold no others, as UTF-8.
#pragma once

#include <string>

#include "platform/events/ItemBlock.h"

namespace osa {

/// Bytes of a value's data that are shown; "…" stands for the rest.
inline constexpr std::size_t kShownBytes = 65536;

/// abcd, or 'a c!' for what is no identifier.
void printCode(FourCharCode code, std::string& out);
/// The same for a field: ---- stays bare, too.
void printKeyword(AEKeyword keyword, std::string& out);
/// The type in front of what is in brackets: obj for 'obj '.
void printTypeName(DescType type, std::string& out);
/// A value that is no container.
void printValue(DescType type, ByteSpan data, std::string& out);
/// 'type'($hexadecimal$)
void printBytes(DescType type, ByteSpan data, std::string& out);

}  // namespace osa
