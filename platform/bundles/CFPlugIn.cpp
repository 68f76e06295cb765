// CFPlugIn: the process's register of factories and the instances made by them.
#include <CoreFoundation/CFPlugIn.h>

#include <array>
#include <cstring>
#include <map>

#include "platform/bundles/Bundle.h"
#include "platform/cf/StringObject.h"

namespace osa {
namespace {

using UUIDKey = std::array<UInt8, 16>;

struct Factory {
    CFPlugInRef plugIn;  // weak: the plug-in takes its factories off the register when it goes
    std::string function;
};

std::mutex& registerLock() {
    static std::mutex lock;
    return lock;
}

std::map<UUIDKey, Factory>& factoryRegister() {
    static auto* const factories = new std::map<UUIDKey, Factory>;
    return *factories;
}

constinit const __CFString kFactoriesKey{"CFPlugInFactories"};
constinit const __CFString kTypesKey{"CFPlugInTypes"};

UUIDKey keyOf(CFUUIDRef uuid) {
    const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(uuid);
    UUIDKey key;
    static_assert(sizeof key == sizeof bytes);
    std::memcpy(key.data(), &bytes, sizeof bytes);
    return key;
}

/// A UUID from its text; null when `text` is anything else.
CFRef<CFUUIDRef> uuidFrom(CFTypeRef text) {
    if (cfCast<__CFString>(text) == nullptr) return {};
    return CFRef<CFUUIDRef>::Adopt(
        CFUUIDCreateFromString(kCFAllocatorDefault, static_cast<CFStringRef>(text)));
}

CFDictionaryRef dictionaryAt(CFDictionaryRef dictionary, CFStringRef key) {
    const CFTypeRef value = CFDictionaryGetValue(dictionary, key);
    return value != nullptr && CFGetTypeID(value) == CFDictionaryGetTypeID()
               ? static_cast<CFDictionaryRef>(value)
               : nullptr;
}

void registerFactory(const void* key, const void* value, void* context) {
    auto* const plugIn = static_cast<CFPlugInRef>(context);
    const CFRef<CFUUIDRef> uuid = uuidFrom(key);
    if (!uuid || cfCast<__CFString>(value) == nullptr) return;
    factoryRegister()[keyOf(uuid.get())] = {plugIn, utf8Of(static_cast<CFStringRef>(value))};
    plugIn->factories.push_back(CFRef<CFTypeRef>::Retain(uuid.get()));
}

struct TypeSearch {
    UUIDKey type;
    CFMutableArrayRef found;
};

void collectFactories(const void* key, const void* value, void* context) {
    const auto& search = *static_cast<TypeSearch*>(context);
    const CFRef<CFUUIDRef> type = uuidFrom(key);
    if (!type || keyOf(type.get()) != search.type) return;
    if (value == nullptr || CFGetTypeID(value) != CFArrayGetTypeID()) return;
    const auto factories = static_cast<CFArrayRef>(value);
    for (CFIndex i = 0; i < CFArrayGetCount(factories); ++i) {
        const CFRef<CFUUIDRef> factory = uuidFrom(CFArrayGetValueAtIndex(factories, i));
        if (factory) CFArrayAppendValue(search.found, factory.get());
    }
}

/// The registered factory with its plug-in retained; null plug-in when there is none.
std::pair<CFRef<CFPlugInRef>, std::string> findFactory(CFUUIDRef uuid) {
    const std::lock_guard<std::mutex> lock(registerLock());
    const auto found = factoryRegister().find(keyOf(uuid));
    if (found == factoryRegister().end()) return {};
    return {CFRef<CFPlugInRef>::Retain(found->second.plugIn), found->second.function};
}

}  // namespace

void unregisterFactories(CFBundleRef plugIn) {
    if (plugIn->factories.empty()) return;
    const std::lock_guard<std::mutex> lock(registerLock());
    for (const auto& uuid : plugIn->factories) {
        const auto found = factoryRegister().find(keyOf(static_cast<CFUUIDRef>(uuid.get())));
        if (found != factoryRegister().end() && found->second.plugIn == plugIn) {
            factoryRegister().erase(found);
        }
    }
}

}  // namespace osa

CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url) {
    auto plugIn = CFRef<CFPlugInRef>::Adopt(CFBundleCreate(allocator, url));
    if (!plugIn) return nullptr;
    const CFDictionaryRef factories =
        osa::dictionaryAt(plugIn.get()->information(), &osa::kFactoriesKey);
    if (factories == nullptr) return nullptr;
    const std::lock_guard<std::mutex> lock(osa::registerLock());
    CFDictionaryApplyFunction(factories, osa::registerFactory, plugIn.get());
    return plugIn.leak();
}

CFBundleRef CFPlugInGetBundle(CFPlugInRef plugIn) {
    return plugIn;
}

CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef typeUUID, CFPlugInRef plugIn) {
    if (typeUUID == nullptr || plugIn == nullptr) return nullptr;
    const CFMutableArrayRef found =
        CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    osa::TypeSearch search{osa::keyOf(typeUUID), found};
    if (const CFDictionaryRef types = osa::dictionaryAt(plugIn->information(), &osa::kTypesKey)) {
        CFDictionaryApplyFunction(types, osa::collectFactories, &search);
    }
    return found;
}

void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factoryUUID, CFUUIDRef typeUUID) {
    if (factoryUUID == nullptr || typeUUID == nullptr) return nullptr;
    const auto [plugIn, functionName] = osa::findFactory(factoryUUID);
    if (!plugIn) return nullptr;
    const auto name = CFRef<CFStringRef>::Adopt(osa::createString(functionName));
    void* const function = CFBundleGetFunctionPointerForName(plugIn.get(), name.get());
    if (function == nullptr) return nullptr;
    return reinterpret_cast<CFPlugInFactoryFunction>(function)(allocator, typeUUID);
}

void CFPlugInAddInstanceForFactory(CFUUIDRef factoryUUID) {
    if (factoryUUID == nullptr) return;
    // The reference that findFactory took is the instance's.
    static_cast<void>(osa::findFactory(factoryUUID).first.leak());
}

void CFPlugInRemoveInstanceForFactory(CFUUIDRef factoryUUID) {
    if (factoryUUID == nullptr) return;
    const auto plugIn = osa::findFactory(factoryUUID).first;
    if (plugIn) CFRelease(plugIn.get());
}
