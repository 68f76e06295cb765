// The polymorphic functions, counting, and the null object.
#include "platform/cf/CFRuntime.h"

#include <OSA/Diagnostics.h>

#include <cassert>
#include <cstdio>

#include "platform/cf/StringObject.h"

struct __CFNull : osa::CFObject {
    constexpr explicit __CFNull() : CFObject(kClass, kImmortal) {}
    static const osa::ClassRecord kClass;
};

namespace osa {

namespace {

std::atomic<CFIndex> liveObjects{0};

std::string describeNull(const CFObject*) {
    return "<null>";
}

}  // namespace

void noteObjectMade() {
    liveObjects.fetch_add(1, std::memory_order_relaxed);
}

void noteObjectGone() {
    liveObjects.fetch_sub(1, std::memory_order_relaxed);
}

CFTypeRef copyIfAlive(CFTypeRef ref) {
    const CFObject* const object = asObject(ref);
    std::uint32_t count = object->count.load(std::memory_order_relaxed);
    while (count != 0) {
        if (count == CFObject::kImmortal) return ref;
        if (object->count.compare_exchange_weak(count, count + 1)) return ref;
    }
    return nullptr;
}

std::string describe(CFTypeRef ref) {
    if (ref == nullptr) return "(null)";
    const CFObject* const object = asObject(ref);
    if (object->type->describe != nullptr) return object->type->describe(object);
    char address[32];
    std::snprintf(address, sizeof address, " %p>", static_cast<const void*>(object));
    return std::string("<") + object->type->name + address;
}

}  // namespace osa

constinit const osa::ClassRecord __CFNull::kClass{"CFNull", nullptr, nullptr, nullptr,
                                                  osa::describeNull};

namespace {
constinit const __CFNull theNull;
}  // namespace

constinit const CFNullRef kCFNull = &theNull;

CFTypeID CFNullGetTypeID() {
    return osa::typeIDOf(__CFNull::kClass);
}

CFTypeRef CFRetain(CFTypeRef ref) {
    assert(ref != nullptr);
    if (ref == nullptr) return nullptr;
    const auto& count = osa::asObject(ref)->count;
    if (count.load(std::memory_order_relaxed) != osa::CFObject::kImmortal)
        osa::asObject(ref)->count.fetch_add(1, std::memory_order_relaxed);
    return ref;
}

void CFRelease(CFTypeRef ref) {
    assert(ref != nullptr);
    if (ref == nullptr) return;
    const osa::CFObject* const object = osa::asObject(ref);
    if (object->count.load(std::memory_order_relaxed) == osa::CFObject::kImmortal) return;
    if (object->count.fetch_sub(1, std::memory_order_acq_rel) == 1)
        object->type->finalize(const_cast<osa::CFObject*>(object));
}

CFIndex CFGetRetainCount(CFTypeRef ref) {
    return ref == nullptr ? 0 : osa::asObject(ref)->count.load(std::memory_order_relaxed);
}

CFTypeID CFGetTypeID(CFTypeRef ref) {
    return ref == nullptr ? 0 : osa::typeIDOf(*osa::asObject(ref)->type);
}

Boolean CFEqual(CFTypeRef first, CFTypeRef second) {
    if (first == second) return true;
    if (first == nullptr || second == nullptr) return false;
    const osa::ClassRecord* const type = osa::asObject(first)->type;
    if (type != osa::asObject(second)->type || type->equal == nullptr) return false;
    return type->equal(osa::asObject(first), osa::asObject(second));
}

CFHashCode CFHash(CFTypeRef ref) {
    if (ref == nullptr) return 0;
    const osa::CFObject* const object = osa::asObject(ref);
    if (object->type->hash != nullptr) return object->type->hash(object);
    return reinterpret_cast<CFHashCode>(object) >> 4;
}

CFStringRef CFCopyDescription(CFTypeRef ref) {
    return osa::createString(osa::describe(ref));
}

CFStringRef CFCopyTypeIDDescription(CFTypeID typeID) {
    if (typeID == 0) return nullptr;
    return osa::createString(reinterpret_cast<const osa::ClassRecord*>(typeID)->name);
}

CFIndex OSALiveObjectCount() {
    return osa::liveObjects.load(std::memory_order_relaxed);
}
