// What containers do with their values through callbacks, and the callbacks for objects.
#pragma once

#include "platform/cf/CFRuntime.h"
#include "platform/cf/StringObject.h"

namespace osa {

template <typename CallBacks>
const void* retainValue(const CallBacks& callBacks, const void* value) {
    return callBacks.retain == nullptr ? value : callBacks.retain(kCFAllocatorDefault, value);
}

template <typename CallBacks>
void releaseValue(const CallBacks& callBacks, const void* value) {
    if (callBacks.release != nullptr) callBacks.release(kCFAllocatorDefault, value);
}

template <typename CallBacks>
bool equalValues(const CallBacks& callBacks, const void* first, const void* second) {
    return first == second || (callBacks.equal != nullptr && callBacks.equal(first, second));
}

template <typename CallBacks>
std::string describeValue(const CallBacks& callBacks, const void* value) {
    if (callBacks.copyDescription == CFCopyDescription) return describe(value);
    if (callBacks.copyDescription == nullptr) return "<pointer>";
    const CFStringRef text = callBacks.copyDescription(value);
    const std::string result = utf8Of(text);
    if (text != nullptr) CFRelease(text);
    return result;
}

inline const void* retainObject(CFAllocatorRef, const void* value) {
    return CFRetain(value);
}

inline void releaseObject(CFAllocatorRef, const void* value) {
    CFRelease(value);
}

}  // namespace osa
