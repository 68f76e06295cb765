// Functions on strings: messages with parameters, replacing, quoting, the Finder's order, case,
// Pascal strings.
//
// They keep no state and may run on any thread. They fail by running out of memory only.
#pragma once

#include <CoreFoundation/CFString.h>

#include <string>

#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

/// The template with its markers "^0" to "^3" replaced, each as often as it stands there. A form
/// with n parameters knows the first n markers and leaves the others. What a parameter brings in
/// is not searched, and nothing escapes a caret: "^^0" is a caret before the parameter.
TCLString ReplaceParams(const TCLString& templateText, const TCLString& p0);
TCLString ReplaceParams(const TCLString& templateText, const TCLString& p0, const TCLString& p1);
TCLString ReplaceParams(const TCLString& templateText, const TCLString& p0, const TCLString& p1,
                        const TCLString& p2);
TCLString ReplaceParams(const TCLString& templateText, const TCLString& p0, const TCLString& p1,
                        const TCLString& p2, const TCLString& p3);

/// Every `key`, from left to right, replaced; the replacement is not searched. Asserts
/// "key.size() > 0"; an empty key is found nowhere.
TCLString ReplaceStrings(const TCLString& source, const TCLString& key,
                         const TCLString& replacement);

/// A backslash before each double quote, for a quoted literal. Backslashes stay as they are, so
/// text that has some may end the literal: not for text from strangers.
TCLString EscapeString(const TCLString& source);

/// Negative, 0 or positive as the Finder sorts names: numbers by their value (of up to 254 digits);
/// case, width and composed forms are all one, and so are kana and ligatures; diacritics and
/// punctuation count. 0 also when the platform cannot compare (UnicodeUtilities.h).
SInt32 CompareLikeTheFinder(const TCLString& a, const TCLString& b);
/// A string that cannot be converted counts as empty.
SInt32 CompareLikeTheFinder(CFStringRef a, CFStringRef b);

// ASCII letters only, whatever the host's locale.

void Uppercase(std::string& s);
void Uppercase(TCLString& s);
void Lowercase(std::string& s);
void Lowercase(TCLString& s);
std::string ToUppercase(const std::string& s);
TCLString ToUppercase(const TCLString& s);
std::string ToLowercase(const std::string& s);
TCLString ToLowercase(const TCLString& s);

/// Appends the Pascal string `src`, which may overlap `dst`, cut so that 255 bytes are not
/// exceeded.
void ConcatPStrings(unsigned char* dst, const unsigned char* src);
