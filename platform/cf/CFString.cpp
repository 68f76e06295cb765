// CFString: creation, access and mutation.
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstring>

#include "platform/cf/StringObject.h"

namespace {

std::u16string_view asUnits(const UniChar* characters, CFIndex length) {
    return {reinterpret_cast<const char16_t*>(characters), static_cast<std::size_t>(length)};
}

/// The part of a range that lies inside `length` units.
CFRange clamped(CFRange range, CFIndex length) {
    const CFIndex start = std::clamp<CFIndex>(range.location, 0, length);
    return CFRangeMake(start, std::clamp<CFIndex>(range.length, 0, length - start));
}

MutableString* asMutable(CFMutableStringRef string) {
    return string != nullptr && string->isMutable ? static_cast<MutableString*>(string) : nullptr;
}

void replace(CFMutableStringRef string, CFRange range, std::u16string_view replacement) {
    MutableString* const target = asMutable(string);
    if (target == nullptr) return;
    range = clamped(range, target->length);
    try {
        target->text.replace(static_cast<std::size_t>(range.location),
                             static_cast<std::size_t>(range.length), replacement);
    } catch (const std::bad_alloc&) {
        return;
    }
    target->textChanged();
}

}  // namespace

CFTypeID CFStringGetTypeID() {
    return osa::typeIDOf(__CFString::kClass);
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* characters,
                                         CFIndex length) {
    if (length < 0 || (characters == nullptr && length > 0)) return nullptr;
    return osa::createString(asUnits(characters, length));
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef, CFStringRef string, CFRange range) {
    if (string == nullptr) return nullptr;
    range = clamped(range, string->length);
    const auto start = static_cast<std::size_t>(range.location);
    const auto count = static_cast<std::size_t>(range.length);
    if (string->isWide) return osa::createString(string->wide().substr(start, count));
    return osa::createMacRomanString(osa::asBytes(string->macRoman().substr(start, count)));
}

CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef string) {
    if (string == nullptr) return nullptr;
    if (string->isMutable) return osa::createString(string->wide());
    return static_cast<CFStringRef>(CFRetain(string));
}

CFIndex CFStringGetLength(CFStringRef string) {
    return string == nullptr ? 0 : string->length;
}

UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index) {
    if (string == nullptr || index < 0 || index >= string->length) return 0;
    return string->at(static_cast<std::size_t>(index));
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
    if (string == nullptr) return;
    range = clamped(range, string->length);
    const auto start = static_cast<std::size_t>(range.location);
    const auto count = static_cast<std::size_t>(range.length);
    if (string->isWide && count > 0) {
        std::memcpy(buffer, string->units + start, count * sizeof(UniChar));
        return;
    }
    for (std::size_t i = 0; i < count; ++i) buffer[i] = string->at(start + i);
}

const UniChar* CFStringGetCharactersPtr(CFStringRef string) {
    if (string == nullptr || !string->isWide) return nullptr;
    return reinterpret_cast<const UniChar*>(string->units);
}

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef, CFIndex) {
    return osa::makeObject<MutableString>();
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef string) {
    if (string == nullptr) return nullptr;
    MutableString* const copy = osa::makeObject<MutableString>();
    if (copy == nullptr) return nullptr;
    try {
        copy->text = osa::unitsOf(string);
    } catch (const std::bad_alloc&) {
        CFRelease(copy);
        return nullptr;
    }
    copy->textChanged();
    return copy;
}

void CFStringReplace(CFMutableStringRef string, CFRange range, CFStringRef replacement) {
    if (replacement != nullptr) replace(string, range, osa::unitsOf(replacement));
}

void CFStringReplaceAll(CFMutableStringRef string, CFStringRef replacement) {
    CFStringReplace(string, CFRangeMake(0, CFStringGetLength(string)), replacement);
}

void CFStringAppend(CFMutableStringRef string, CFStringRef appended) {
    CFStringReplace(string, CFRangeMake(CFStringGetLength(string), 0), appended);
}

void CFStringAppendCharacters(CFMutableStringRef string, const UniChar* characters,
                              CFIndex length) {
    if (length <= 0) return;
    replace(string, CFRangeMake(CFStringGetLength(string), 0), asUnits(characters, length));
}

void CFStringInsert(CFMutableStringRef string, CFIndex index, CFStringRef inserted) {
    CFStringReplace(string, CFRangeMake(index, 0), inserted);
}

void CFStringDelete(CFMutableStringRef string, CFRange range) {
    replace(string, range, {});
}
