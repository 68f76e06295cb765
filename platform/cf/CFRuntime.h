// What every Core Foundation type is made of: the object header, the class record, making and
// ending.
//
// A type is a struct that derives from osa::CFObject (first and without virtual functions), one
// static ClassRecord, and the published functions of its name. Objects begin with a count of 1.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <atomic>
#include <new>
#include <string>
#include <utility>

namespace osa {

struct CFObject;

/// What the polymorphic functions need of a type. Its address is the type identifier.
struct ClassRecord {
    const char* name;
    /// Destroys the object and frees its memory; called when the count reaches 0.
    void (*finalize)(CFObject* object);
    /// For two objects of this type; null: only identical objects are equal.
    bool (*equal)(const CFObject* first, const CFObject* second);
    /// Null: by address.
    CFHashCode (*hash)(const CFObject* object);
    /// UTF-8 for people; null: type and address.
    std::string (*describe)(const CFObject* object);
};

struct CFObject {
    /// Count of constant objects, which are never changed or counted.
    static constexpr std::uint32_t kImmortal = 0xFFFFFFFF;

    constexpr explicit CFObject(const ClassRecord& record, std::uint32_t initialCount = 1)
        : type(&record), count(initialCount) {}

    const ClassRecord* type;
    mutable std::atomic<std::uint32_t> count;
};

inline CFTypeID typeIDOf(const ClassRecord& record) {
    return reinterpret_cast<CFTypeID>(&record);
}

inline const CFObject* asObject(CFTypeRef ref) {
    return static_cast<const CFObject*>(ref);
}

/// `ref` as a T, or null when it is null or of another type: for values that came from outside. T
/// has its record as T::kClass.
template <typename T>
const T* cfCast(CFTypeRef ref) {
    if (ref == nullptr || asObject(ref)->type != &T::kClass) return nullptr;
    return static_cast<const T*>(asObject(ref));
}

/// Takes a reference through a pointer that keeps nothing alive, in a table from which objects take
/// themselves when they go: false when the last reference is gone already and the object is only
/// waiting to do so.
inline bool retainIfAlive(const CFObject* object) {
    std::uint32_t count = object->count.load(std::memory_order_relaxed);
    while (count != 0) {
        if (count == CFObject::kImmortal) return true;
        if (object->count.compare_exchange_weak(count, count + 1)) return true;
    }
    return false;
}

/// Counts one more or less live object; makeObject and deleteObject do so themselves.
void noteObjectMade();
void noteObjectGone();

/// A new T of its own class with one reference, or null when memory fails.
template <typename T, typename... Arguments>
T* makeObject(Arguments&&... arguments) {
    T* const object = new (std::nothrow) T(std::forward<Arguments>(arguments)...);
    if (object != nullptr) noteObjectMade();
    return object;
}

/// The finalizer of objects that makeObject made.
template <typename T>
void deleteObject(CFObject* object) {
    delete static_cast<T*>(object);
    noteObjectGone();
}

/// The description of any object, or "(null)".
std::string describe(CFTypeRef ref);

}  // namespace osa
