// CFDictionary: entries in the order of their keys' arrival, found through an open-addressing
// table.
#include <CoreFoundation/CFDictionary.h>

#include <algorithm>
#include <vector>

#include "platform/cf/CFRuntime.h"
#include "platform/cf/ContainerCallBacks.h"

namespace {

struct Entry {
    const void* key;
    const void* value;
    CFHashCode hash;
    bool live;
};

constexpr std::uint32_t kFree = 0xFFFFFFFF;
/// Up to this many entries are searched without a table.
constexpr std::size_t kSmall = 8;

}  // namespace

struct __CFDictionary : osa::CFObject {
    static const osa::ClassRecord kClass;
    __CFDictionary(bool changeable, const CFDictionaryKeyCallBacks* keys,
                   const CFDictionaryValueCallBacks* values)
        : CFObject(kClass),
          keyCallBacks(keys == nullptr ? CFDictionaryKeyCallBacks{} : *keys),
          valueCallBacks(values == nullptr ? CFDictionaryValueCallBacks{} : *values),
          isMutable(changeable) {}
    ~__CFDictionary() { clear(); }

    Entry* find(const void* key, CFHashCode hash) {
        return const_cast<Entry*>(std::as_const(*this).find(key, hash));
    }
    const Entry* find(const void* key, CFHashCode hash) const;
    const Entry* find(const void* key) const { return find(key, hashOf(key)); }
    CFHashCode hashOf(const void* key) const;
    void add(const void* key, const void* value, CFHashCode hash);
    void replace(Entry& entry, const void* value);
    void remove(Entry& entry);
    void clear();

    CFDictionaryKeyCallBacks keyCallBacks;
    CFDictionaryValueCallBacks valueCallBacks;
    bool isMutable;
    std::size_t count = 0;
    std::vector<Entry> entries;        ///< also removed ones, not live, until rebuild()
    std::vector<std::uint32_t> table;  ///< places in `entries`; empty while there are few

  private:
    bool matches(const Entry& entry, const void* key, CFHashCode hash) const {
        return entry.live && entry.hash == hash && osa::equalValues(keyCallBacks, entry.key, key);
    }
    void rebuild();
    void enter(std::uint32_t place);
};

CFHashCode __CFDictionary::hashOf(const void* key) const {
    CFHashCode hash =
        keyCallBacks.hash == nullptr ? reinterpret_cast<CFHashCode>(key) : keyCallBacks.hash(key);
    hash ^= hash >> 33;  // callers' hashes may be poor in their low bits
    hash *= 0xFF51AFD7ED558CCDu;
    return hash ^ hash >> 33;
}

const Entry* __CFDictionary::find(const void* key, CFHashCode hash) const {
    if (table.empty()) {
        for (const Entry& entry : entries)
            if (matches(entry, key, hash)) return &entry;
        return nullptr;
    }
    const std::size_t mask = table.size() - 1;
    for (std::size_t slot = hash & mask; table[slot] != kFree; slot = (slot + 1) & mask)
        if (matches(entries[table[slot]], key, hash)) return &entries[table[slot]];
    return nullptr;
}

void __CFDictionary::enter(std::uint32_t place) {
    const std::size_t mask = table.size() - 1;
    std::size_t slot = entries[place].hash & mask;
    while (table[slot] != kFree) slot = (slot + 1) & mask;
    table[slot] = place;
}

/// Drops removed entries and makes room in the table for as many entries again.
void __CFDictionary::rebuild() {
    std::size_t size = 4 * kSmall;
    while (size < count * 4) size *= 2;
    std::vector<std::uint32_t> fresh(size, kFree);
    std::erase_if(entries, [](const Entry& entry) { return !entry.live; });
    table = std::move(fresh);
    for (std::uint32_t place = 0; place < entries.size(); ++place) enter(place);
}

void __CFDictionary::add(const void* key, const void* value, CFHashCode hash) {
    const bool crowded =
        table.empty() ? entries.size() >= kSmall : entries.size() * 2 >= table.size();
    if (crowded) rebuild();
    entries.push_back({key, value, hash, true});
    if (!table.empty()) enter(static_cast<std::uint32_t>(entries.size() - 1));
    entries.back().key = osa::retainValue(keyCallBacks, key);
    entries.back().value = osa::retainValue(valueCallBacks, value);
    ++count;
}

void __CFDictionary::replace(Entry& entry, const void* value) {
    const void* const old = std::exchange(entry.value, osa::retainValue(valueCallBacks, value));
    osa::releaseValue(valueCallBacks, old);
}

void __CFDictionary::remove(Entry& entry) {
    const Entry old = entry;
    entry.live = false;
    --count;
    osa::releaseValue(keyCallBacks, old.key);
    osa::releaseValue(valueCallBacks, old.value);
}

void __CFDictionary::clear() {
    const std::vector<Entry> old = std::exchange(entries, {});
    table.clear();
    count = 0;
    for (const Entry& entry : old) {
        if (!entry.live) continue;
        osa::releaseValue(keyCallBacks, entry.key);
        osa::releaseValue(valueCallBacks, entry.value);
    }
}

namespace {

enum class IfNew { add, leave };
enum class IfThere { replace, leave };

void set(CFMutableDictionaryRef dictionary, const void* key, const void* value, IfNew ifNew,
         IfThere ifThere) {
    const CFHashCode hash = dictionary->hashOf(key);
    Entry* const entry = dictionary->find(key, hash);
    if (entry != nullptr) {
        if (ifThere == IfThere::replace) dictionary->replace(*entry, value);
        return;
    }
    if (ifNew == IfNew::leave) return;
    try {
        dictionary->add(key, value, hash);
    } catch (const std::bad_alloc&) {
    }
}

void change(CFMutableDictionaryRef dictionary, const void* key, const void* value, IfNew ifNew,
            IfThere ifThere) {
    if (dictionary == nullptr || !dictionary->isMutable) return;
    // Objects are never null; without callbacks any pointer is a value.
    if (key == nullptr && dictionary->keyCallBacks.retain != nullptr) return;
    if (value == nullptr && dictionary->valueCallBacks.retain != nullptr) return;
    set(dictionary, key, value, ifNew, ifThere);
}

bool equalDictionaries(const osa::CFObject* a, const osa::CFObject* b) {
    const auto& first = *static_cast<const __CFDictionary*>(a);
    const auto& second = *static_cast<const __CFDictionary*>(b);
    if (first.count != second.count) return false;
    return std::ranges::all_of(first.entries, [&](const Entry& entry) {
        if (!entry.live) return true;
        const Entry* const other = second.find(entry.key);
        return other != nullptr &&
               osa::equalValues(first.valueCallBacks, entry.value, other->value);
    });
}

CFHashCode hashDictionary(const osa::CFObject* object) {
    return static_cast<const __CFDictionary*>(object)->count;
}

std::string describeDictionary(const osa::CFObject* object) {
    const auto& dictionary = *static_cast<const __CFDictionary*>(object);
    std::string text = "{";
    for (const Entry& entry : dictionary.entries) {
        if (!entry.live) continue;
        text += osa::describeValue(dictionary.keyCallBacks, entry.key) + " = " +
                osa::describeValue(dictionary.valueCallBacks, entry.value) + "; ";
    }
    return text + "}";
}

const void* copyStringKey(CFAllocatorRef allocator, const void* key) {
    return CFStringCreateCopy(allocator, static_cast<CFStringRef>(key));
}

__CFDictionary* copyOf(CFDictionaryRef dictionary, bool changeable) {
    auto* const copy = osa::makeObject<__CFDictionary>(changeable, &dictionary->keyCallBacks,
                                                       &dictionary->valueCallBacks);
    if (copy == nullptr) return nullptr;
    for (const Entry& entry : dictionary->entries)
        if (entry.live) set(copy, entry.key, entry.value, IfNew::add, IfThere::replace);
    return copy;
}

}  // namespace

constinit const osa::ClassRecord __CFDictionary::kClass{
    "CFDictionary", osa::deleteObject<__CFDictionary>, equalDictionaries, hashDictionary,
    describeDictionary};

constinit const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{
    0, osa::retainObject, osa::releaseObject, CFCopyDescription, CFEqual, CFHash};
constinit const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks{
    0, copyStringKey, osa::releaseObject, CFCopyDescription, CFEqual, CFHash};
constinit const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{
    0, osa::retainObject, osa::releaseObject, CFCopyDescription, CFEqual};

CFTypeID CFDictionaryGetTypeID() {
    return osa::typeIDOf(__CFDictionary::kClass);
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
    if (count < 0 || (count > 0 && (keys == nullptr || values == nullptr))) return nullptr;
    auto* const made = osa::makeObject<__CFDictionary>(false, keyCallBacks, valueCallBacks);
    if (made == nullptr) return nullptr;
    for (CFIndex i = 0; i < count; ++i) set(made, keys[i], values[i], IfNew::add, IfThere::replace);
    return made;
}

CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef, CFDictionaryRef dictionary) {
    if (dictionary == nullptr) return nullptr;
    if (!dictionary->isMutable) return static_cast<CFDictionaryRef>(CFRetain(dictionary));
    return copyOf(dictionary, false);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks) {
    return osa::makeObject<__CFDictionary>(true, keyCallBacks, valueCallBacks);
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef, CFIndex,
                                                     CFDictionaryRef dictionary) {
    return dictionary == nullptr ? nullptr : copyOf(dictionary, true);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
    return dictionary == nullptr ? 0 : static_cast<CFIndex>(dictionary->count);
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void* key,
                                      const void** value) {
    if (dictionary == nullptr) return false;
    if (key == nullptr && dictionary->keyCallBacks.retain != nullptr) return false;
    const Entry* const entry = dictionary->find(key);
    if (entry != nullptr && value != nullptr) *value = entry->value;
    return entry != nullptr;
}

Boolean CFDictionaryContainsKey(CFDictionaryRef dictionary, const void* key) {
    return CFDictionaryGetValueIfPresent(dictionary, key, nullptr);
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    const void* value = nullptr;
    CFDictionaryGetValueIfPresent(dictionary, key, &value);
    return value;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                  const void** values) {
    if (dictionary == nullptr) return;
    for (const Entry& entry : dictionary->entries) {
        if (!entry.live) continue;
        if (keys != nullptr) *keys++ = entry.key;
        if (values != nullptr) *values++ = entry.value;
    }
}

void CFDictionaryApplyFunction(CFDictionaryRef dictionary, CFDictionaryApplierFunction applier,
                               void* context) {
    if (dictionary == nullptr) return;
    for (const Entry& entry : dictionary->entries)
        if (entry.live) applier(entry.key, entry.value, context);
}

void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
    change(dictionary, key, value, IfNew::add, IfThere::replace);
}

void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
    change(dictionary, key, value, IfNew::add, IfThere::leave);
}

void CFDictionaryReplaceValue(CFMutableDictionaryRef dictionary, const void* key,
                              const void* value) {
    change(dictionary, key, value, IfNew::leave, IfThere::replace);
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key) {
    if (dictionary == nullptr || !dictionary->isMutable || key == nullptr) return;
    Entry* const entry = dictionary->find(key, dictionary->hashOf(key));
    if (entry != nullptr) dictionary->remove(*entry);
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef dictionary) {
    if (dictionary != nullptr && dictionary->isMutable) dictionary->clear();
}
