// The forms in which a record of a file is printed.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>

#include <string>

#include "service/ImporterHost.h"

namespace osa::cli {

/// UTF-8 of a string; unpaired surrogates become U+FFFD.
std::string toUTF8(CFStringRef string);
/// `bytes` with whatever is not UTF-8 replaced by U+FFFD.
std::string toValidUTF8(const std::string& bytes);

/// UTF-8 for a terminal: what is not UTF-8 replaced; controls (C1 and DEL too), line separators and
/// marks that change the direction as \u escapes. As JSON it means the same as before.
std::string forTerminal(const std::string& bytes);

/// One line of JSON without its newline: path, kind, kindName, imported, attributes, log, error.
/// Data is base64, dates are ISO 8601 in UTC.
std::string recordAsJson(const service::ImportRecord& record);

/// Aligned "key = value" lines for people; nothing in them can steer a terminal.
std::string recordAsText(const service::ImportRecord& record);

/// The same fields as a dictionary, for a property list; never null.
CFRef<CFDictionaryRef> recordAsPropertyList(const service::ImportRecord& record);

}  // namespace osa::cli
