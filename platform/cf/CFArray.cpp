// CFArray: values in a vector.
#include <CoreFoundation/CFArray.h>

#include <algorithm>
#include <vector>

#include "platform/cf/CFRuntime.h"
#include "platform/cf/ContainerCallBacks.h"

struct __CFArray : osa::CFObject {
    static const osa::ClassRecord kClass;
    __CFArray(bool changeable, const CFArrayCallBacks* given)
        : CFObject(kClass),
          callBacks(given == nullptr ? CFArrayCallBacks{} : *given),
          isMutable(changeable) {}
    ~__CFArray() {
        for (const void* value : values) osa::releaseValue(callBacks, value);
    }

    CFArrayCallBacks callBacks;
    bool isMutable;
    std::vector<const void*> values;
};

namespace {

bool equalArrays(const osa::CFObject* a, const osa::CFObject* b) {
    const auto& first = *static_cast<const __CFArray*>(a);
    const auto& second = *static_cast<const __CFArray*>(b);
    if (first.callBacks.equal != second.callBacks.equal) return false;
    return std::ranges::equal(first.values, second.values, [&](const void* x, const void* y) {
        return osa::equalValues(first.callBacks, x, y);
    });
}

CFHashCode hashArray(const osa::CFObject* object) {
    return static_cast<const __CFArray*>(object)->values.size();
}

std::string describeArray(const osa::CFObject* object) {
    const auto& array = *static_cast<const __CFArray*>(object);
    std::string text = "(";
    for (std::size_t i = 0; i < array.values.size(); ++i) {
        if (i > 0) text += ", ";
        text += osa::describeValue(array.callBacks, array.values[i]);
    }
    return text + ")";
}

/// Runs a change that may need memory; nothing is thrown on.
template <typename Change>
bool attempt(Change change) {
    try {
        change();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool holds(CFArrayRef array, CFIndex index) {
    return array != nullptr && index >= 0 && index < CFArrayGetCount(array);
}

/// The part of a range that lies inside the array, as iterators.
auto part(const __CFArray& array, CFRange range) {
    const auto count = static_cast<CFIndex>(array.values.size());
    const CFIndex start = std::clamp<CFIndex>(range.location, 0, count);
    const CFIndex length = std::clamp<CFIndex>(range.length, 0, count - start);
    const auto first = array.values.begin() + start;
    return std::pair(first, first + length);
}

}  // namespace

constinit const osa::ClassRecord __CFArray::kClass{"CFArray", osa::deleteObject<__CFArray>,
                                                   equalArrays, hashArray, describeArray};

constinit const CFArrayCallBacks kCFTypeArrayCallBacks{0, osa::retainObject, osa::releaseObject,
                                                       CFCopyDescription, CFEqual};

CFTypeID CFArrayGetTypeID() {
    return osa::typeIDOf(__CFArray::kClass);
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks) {
    if (count < 0 || (values == nullptr && count > 0)) return nullptr;
    auto* const array = osa::makeObject<__CFArray>(false, callBacks);
    if (array == nullptr) return nullptr;
    const bool done = attempt([&] { array->values.reserve(static_cast<std::size_t>(count)); });
    for (CFIndex i = 0; done && i < count; ++i)
        array->values.push_back(osa::retainValue(array->callBacks, values[i]));
    if (done) return array;
    CFRelease(array);
    return nullptr;
}

CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef array) {
    if (array == nullptr) return nullptr;
    if (!array->isMutable) return static_cast<CFArrayRef>(CFRetain(array));
    return CFArrayCreate(allocator, const_cast<const void**>(array->values.data()),
                         CFArrayGetCount(array), &array->callBacks);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex, const CFArrayCallBacks* callBacks) {
    return osa::makeObject<__CFArray>(true, callBacks);
}

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                           CFArrayRef array) {
    if (array == nullptr) return nullptr;
    const CFMutableArrayRef copy = CFArrayCreateMutable(allocator, capacity, &array->callBacks);
    if (copy != nullptr) CFArrayAppendArray(copy, array, CFRangeMake(0, CFArrayGetCount(array)));
    return copy;
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return array == nullptr ? 0 : static_cast<CFIndex>(array->values.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    return holds(array, index) ? array->values[static_cast<std::size_t>(index)] : nullptr;
}

void CFArrayGetValues(CFArrayRef array, CFRange range, const void** values) {
    if (array == nullptr) return;
    const auto [first, last] = part(*array, range);
    std::copy(first, last, values);
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef array, CFRange range, const void* value) {
    if (array == nullptr) return kCFNotFound;
    const auto [first, last] = part(*array, range);
    const auto found = std::find_if(first, last, [&](const void* candidate) {
        return osa::equalValues(array->callBacks, candidate, value);
    });
    return found == last ? CFIndex{kCFNotFound} : found - array->values.begin();
}

Boolean CFArrayContainsValue(CFArrayRef array, CFRange range, const void* value) {
    return CFArrayGetFirstIndexOfValue(array, range, value) != kCFNotFound;
}

void CFArrayApplyFunction(CFArrayRef array, CFRange range, CFArrayApplierFunction applier,
                          void* context) {
    if (array == nullptr) return;
    const auto [first, last] = part(*array, range);
    std::for_each(first, last, [&](const void* value) { applier(value, context); });
}

void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
    CFArrayInsertValueAtIndex(array, CFArrayGetCount(array), value);
}

void CFArrayAppendArray(CFMutableArrayRef array, CFArrayRef other, CFRange range) {
    if (other == nullptr) return;
    const auto [first, last] = part(*other, range);
    const std::vector<const void*> values(first, last);  // `other` may be `array` itself
    for (const void* value : values) CFArrayAppendValue(array, value);
}

void CFArrayInsertValueAtIndex(CFMutableArrayRef array, CFIndex index, const void* value) {
    if (array == nullptr || !array->isMutable || index < 0 || index > CFArrayGetCount(array))
        return;
    const bool done = attempt([&] { array->values.insert(array->values.begin() + index, value); });
    if (done)
        array->values[static_cast<std::size_t>(index)] = osa::retainValue(array->callBacks, value);
}

void CFArraySetValueAtIndex(CFMutableArrayRef array, CFIndex index, const void* value) {
    if (index == CFArrayGetCount(array)) return CFArrayAppendValue(array, value);
    if (!holds(array, index) || !array->isMutable) return;
    const void*& place = array->values[static_cast<std::size_t>(index)];
    const void* const old = std::exchange(place, osa::retainValue(array->callBacks, value));
    osa::releaseValue(array->callBacks, old);
}

void CFArrayRemoveValueAtIndex(CFMutableArrayRef array, CFIndex index) {
    if (!holds(array, index) || !array->isMutable) return;
    const void* const old = array->values[static_cast<std::size_t>(index)];
    array->values.erase(array->values.begin() + index);
    osa::releaseValue(array->callBacks, old);
}

void CFArrayRemoveAllValues(CFMutableArrayRef array) {
    if (array == nullptr || !array->isMutable) return;
    const std::vector<const void*> old = std::exchange(array->values, {});
    for (const void* value : old) osa::releaseValue(array->callBacks, value);
}

void CFArraySortValues(CFMutableArrayRef array, CFRange range, CFComparatorFunction comparator,
                       void* context) {
    if (array == nullptr || !array->isMutable) return;
    const CFIndex start = part(*array, range).first - array->values.begin();
    const CFIndex count = part(*array, range).second - part(*array, range).first;
    const auto first = array->values.begin() + start;
    std::stable_sort(first, first + count, [&](const void* a, const void* b) {
        return comparator(a, b, context) == kCFCompareLessThan;
    });
}
