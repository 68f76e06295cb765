// Old-style property lists and tables of strings, through the sniffing of forms and encodings.
#include "fuzz/cf/CheckPropertyList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes =
        CFRef<CFDataRef>::Adopt(CFDataCreate(nullptr, data, static_cast<CFIndex>(size)));
    return osa::plist::fuzzPropertyList([&](const osa::plist::Maker& maker) {
        return osa::plist::Value::Adopt(CFPropertyListCreateWithData(
            nullptr, bytes.get(),
            maker.mutableLeaves() ? kCFPropertyListMutableContainersAndLeaves
                                  : kCFPropertyListImmutable,
            nullptr, nullptr));
    });
}
