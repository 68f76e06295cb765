// Short ways to make and read Core Foundation objects in tests, and a check that none is left over.
#pragma once

#include <CoreFoundation/CFString.h>

#include "tests/support/Test.h"

/// Fails the test when it ends with more live objects than it began with.
class CFTest : public testing::Test {
  protected:
    void SetUp() override { before_ = OSALiveObjectCount(); }
    void TearDown() override { EXPECT_EQ(OSALiveObjectCount(), before_) << "objects leaked"; }

  private:
    CFIndex before_ = 0;
};

using StringRef = CFRef<CFStringRef>;

inline StringRef makeString(std::string_view utf8) {
    return StringRef::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

/// UTF-8 text of a string, or "(null)".
inline std::string text(CFStringRef string) {
    if (string == nullptr) return "(null)";
    std::string bytes(static_cast<std::size_t>(CFStringGetLength(string)) * 3, '\0');
    CFIndex used = 0;
    CFStringGetBytes(string, CFRangeMake(0, CFStringGetLength(string)), kCFStringEncodingUTF8, '?',
                     false, reinterpret_cast<UInt8*>(bytes.data()),
                     static_cast<CFIndex>(bytes.size()), &used);
    bytes.resize(static_cast<std::size_t>(used));
    return bytes;
}

inline std::string text(const StringRef& string) {
    return text(string.get());
}

/// Of a new string, which goes.
inline std::string taken(CFStringRef string) {
    return text(StringRef::Adopt(string));
}

inline std::string description(CFTypeRef object) {
    return object == nullptr ? "(null)" : taken(CFCopyDescription(object));
}
