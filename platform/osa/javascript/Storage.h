// The stored form: "JsOsaDAS1.001.00", a binary property list, and the trailer of every stored
// script. The list is a dictionary with the source under "script", or with an encoded source under
// "runOnly".
#pragma once

#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <string>

#include "platform/base/ByteReader.h"

namespace osa::script {

inline constexpr OSType kJavaScript = 0x6A736372;  // 'jscr'

struct StoredSource {
    std::u16string text;
    bool runOnly = false;
};

/// errOSABadStorageType: no stored script, or one of another language. errOSACorruptData: not of
/// this form inside.
OSErr readStored(ByteSpan bytes, StoredSource* source);
OSErr writeStored(const StoredSource& source, AEDesc* desc);

}  // namespace osa::script
