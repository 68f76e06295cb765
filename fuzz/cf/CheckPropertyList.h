// What must hold of every property list that a reader accepted.
#pragma once

#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFRef.h>
#include <OSA/Diagnostics.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/cf/plist/PropertyListForms.h"

namespace osa::plist {

/// What was written is read again, and then written the same each time. The first writing may lose
/// what the form cannot hold, such as control characters in XML.
template <typename Read, typename Write>
void checkRoundTrip(CFTypeRef list, Read read, Write write) {
    std::string first;
    if (!write(list, first)) return;
    std::string second;
    std::string third;
    const Value again = read(first);
    if (!again || !write(again.get(), second)) std::abort();
    const Value settled = read(second);
    if (!settled || !write(settled.get(), third) || second != third) std::abort();
}

/// Runs `read` with each kind of mutability over one input; nothing may be left over.
template <typename Read>
int fuzzPropertyList(Read read) {
    const CFIndex before = OSALiveObjectCount();
    for (const CFPropertyListMutabilityOptions options :
         {kCFPropertyListImmutable, kCFPropertyListMutableContainersAndLeaves}) {
        const Maker maker(options);
        const Value list = read(maker);
        if (!list) continue;
        checkRoundTrip(
            list.get(), [&](const std::string& bytes) { return readBinary(asBytes(bytes), maker); },
            writeBinary);
        checkRoundTrip(
            list.get(),
            [&](const std::string& bytes) {
                const auto data = CFRef<CFDataRef>::Adopt(
                    CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                 static_cast<CFIndex>(bytes.size())));
                return Value::Adopt(
                    CFPropertyListCreateWithData(nullptr, data.get(), options, nullptr, nullptr));
            },
            writeXML);
    }
    if (OSALiveObjectCount() != before) std::abort();
    return 0;
}

}  // namespace osa::plist
