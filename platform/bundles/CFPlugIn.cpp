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
    // weak: the plug-in takes its factories off the register when it goes
    CFPlugInRef plugIn = nullptr;
    std::string function;
};

/// What the process knows of plug-ins, under one lock.
struct PlugInRegister {
    std::mutex lock;
    std::map<UUIDKey, Factory> factories;
    /// The plug-ins that living instances keep alive, by the factory they were added for. An
    /// instance gives up what it was given, whatever has been registered since.
    std::multimap<UUIDKey, CFRef<CFPlugInRef>> instances;
};

PlugInRegister& plugInRegister() {
    static auto* const everything = new PlugInRegister;
    return *everything;
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

/// The first plug-in that declares a factory keeps it.
void registerFactory(const void* key, const void* value, void* context) {
    auto* const plugIn = static_cast<CFPlugInRef>(context);
    const CFRef<CFUUIDRef> uuid = uuidFrom(key);
    if (!uuid || cfCast<__CFString>(value) == nullptr) return;
    Factory& entry = plugInRegister().factories[keyOf(uuid.get())];
    // A plug-in whose last reference is gone is only waiting to take its factories off the
    // register.
    if (entry.plugIn != nullptr && CFGetRetainCount(entry.plugIn) > 0) return;
    entry = {plugIn, utf8Of(static_cast<CFStringRef>(value))};
    plugIn->factories.push_back(CFRef<CFTypeRef>::Retain(uuid.get()));
}

CFRef<CFPlugInRef> livingPlugIn(const Factory& factory) {
    return CFRef<CFPlugInRef>::Adopt(
        static_cast<CFPlugInRef>(const_cast<void*>(copyIfAlive(factory.plugIn))));
}

/// The living plug-in of the same folder; null when there is none.
CFRef<CFPlugInRef> registeredAt(const std::string& root) {
    for (const auto& [uuid, factory] : plugInRegister().factories) {
        if (factory.plugIn->layout.root != root) continue;
        if (auto plugIn = livingPlugIn(factory)) return plugIn;
    }
    return {};
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
    const std::lock_guard<std::mutex> lock(plugInRegister().lock);
    const auto found = plugInRegister().factories.find(keyOf(uuid));
    if (found == plugInRegister().factories.end()) return {};
    return {livingPlugIn(found->second), found->second.function};
}

}  // namespace

void unregisterFactories(CFBundleRef plugIn) {
    if (plugIn->factories.empty()) return;
    const std::lock_guard<std::mutex> lock(plugInRegister().lock);
    for (const auto& uuid : plugIn->factories) {
        const auto entry =
            plugInRegister().factories.find(keyOf(static_cast<CFUUIDRef>(uuid.get())));
        const bool isOwn =
            entry != plugInRegister().factories.end() && entry->second.plugIn == plugIn;
        if (isOwn) plugInRegister().factories.erase(entry);
    }
}

}  // namespace osa

CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url) {
    auto plugIn = CFRef<CFPlugInRef>::Adopt(CFBundleCreate(allocator, url));
    if (!plugIn) return nullptr;
    const CFDictionaryRef factories =
        osa::dictionaryAt(plugIn.get()->information(), &osa::kFactoriesKey);
    if (factories == nullptr) return nullptr;
    const std::lock_guard<std::mutex> lock(osa::plugInRegister().lock);
    if (auto known = osa::registeredAt(plugIn.get()->layout.root)) return known.leak();
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
    auto plugIn = osa::findFactory(factoryUUID).first;
    if (!plugIn) return;
    const std::lock_guard<std::mutex> lock(osa::plugInRegister().lock);
    osa::plugInRegister().instances.emplace(osa::keyOf(factoryUUID), std::move(plugIn));
}

void CFPlugInRemoveInstanceForFactory(CFUUIDRef factoryUUID) {
    if (factoryUUID == nullptr) return;
    // Outlives the lock: the last reference takes the plug-in off the register, which locks it
    // again.
    CFRef<CFPlugInRef> givenUp;
    const std::lock_guard<std::mutex> lock(osa::plugInRegister().lock);
    const auto instance = osa::plugInRegister().instances.find(osa::keyOf(factoryUUID));
    if (instance == osa::plugInRegister().instances.end()) return;
    givenUp = std::move(instance->second);
    osa::plugInRegister().instances.erase(instance);
}
