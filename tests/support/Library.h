// What tests of the support library share: statuses that are thrown, names, references.
#pragma once

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "tests/support/Test.h"

namespace osa::test {

/// What `work` throws; noErr when it does not.
inline OSStatus thrown(const std::function<void()>& work) {
    try {
        work();
        return noErr;
    } catch (OSStatus status) {
        return status;
    }
}

inline TCLString utf16(const std::string& utf8) {
    return ToTCLString(utf8.data(), static_cast<UInt32>(utf8.size()), kCFStringEncodingUTF8);
}

inline CFileSpec specOf(const std::string& path) {
    return CFileSpec(refOf(path));
}

}  // namespace osa::test
