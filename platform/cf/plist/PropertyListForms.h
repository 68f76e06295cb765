// The readers and writers of each form of property list.
#pragma once

#include <string>

#include "platform/cf/plist/PropertyListTree.h"

namespace osa::plist {

/// Whether the bytes begin as a binary list does.
bool isBinary(ByteSpan bytes);
Value readBinary(ByteSpan bytes, const Maker& maker);

/// Whether the text begins as an XML list does.
bool isXML(std::u16string_view text);
Value readXML(std::u16string_view text, const Maker& maker);

/// Also ".strings" tables. Text of nothing but blanks and comments is an empty dictionary.
Value readOldStyle(std::u16string_view text, const Maker& maker);

/// False when the list holds what the form cannot; `out` may then hold a part.
bool writeXML(CFTypeRef list, std::string& out);
bool writeBinary(CFTypeRef list, std::string& out);

}  // namespace osa::plist
