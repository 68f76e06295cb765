// CFString: comparing, searching, splitting and joining.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <limits>

#include "platform/cf/StringObject.h"
#include "platform/text/TextConverter.h"

namespace {

char16_t folded(char16_t unit, CFStringCompareFlags options) {
    if ((options & kCFCompareCaseInsensitive) == 0) return unit;
    const char32_t character = osa::foldCase(unit);
    return character < 0x10000 ? static_cast<char16_t>(character) : unit;
}

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

/// The run of digits at `index` without leading zeros; moves behind it.
std::u16string_view takeNumber(std::u16string_view text, std::size_t& index) {
    while (index < text.size() && text[index] == u'0') ++index;
    const std::size_t start = index;
    while (index < text.size() && isDigit(text[index])) ++index;
    return text.substr(start, index - start);
}

int compareUnits(std::u16string_view first, std::u16string_view second,
                 CFStringCompareFlags options) {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < first.size() && j < second.size()) {
        const bool numbers = (options & kCFCompareNumerically) != 0;
        if (numbers && isDigit(first[i]) && isDigit(second[j])) {
            const std::u16string_view a = takeNumber(first, i);
            const std::u16string_view b = takeNumber(second, j);
            if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
            if (a != b) return a < b ? -1 : 1;
            continue;
        }
        const char16_t a = folded(first[i++], options);
        const char16_t b = folded(second[j++], options);
        if (a != b) return a < b ? -1 : 1;
    }
    return i < first.size() ? 1 : j < second.size() ? -1 : 0;
}

bool matchesAt(const __CFString& text, std::size_t position, const __CFString& sought,
               CFStringCompareFlags options) {
    for (std::size_t i = 0; i < sought.size(); ++i)
        if (folded(text.at(position + i), options) != folded(sought.at(i), options)) return false;
    return true;
}

/// First match at or behind `start`, or size() when there is none.
std::size_t findFrom(const __CFString& text, const __CFString& sought, std::size_t start) {
    for (std::size_t i = start; i + sought.size() <= text.size(); ++i)
        if (matchesAt(text, i, sought, 0)) return i;
    return text.size();
}

bool hasAt(CFStringRef string, CFStringRef part, bool atEnd) {
    if (string == nullptr || part == nullptr || part->length > string->length) return false;
    return matchesAt(*string, atEnd ? string->size() - part->size() : 0, *part, 0);
}

}  // namespace

CFComparisonResult CFStringCompare(CFStringRef first, CFStringRef second,
                                   CFStringCompareFlags options) {
    const int order = compareUnits(osa::unitsOf(first), osa::unitsOf(second), options);
    return static_cast<CFComparisonResult>(order);
}

CFRange CFStringFind(CFStringRef string, CFStringRef toFind, CFStringCompareFlags options) {
    const CFRange none = CFRangeMake(kCFNotFound, 0);
    if (string == nullptr || toFind == nullptr || toFind->length == 0) return none;
    if (toFind->length > string->length) return none;
    const std::size_t last = string->size() - toFind->size();
    const bool backwards = (options & kCFCompareBackwards) != 0;
    const std::size_t tries = (options & kCFCompareAnchored) != 0 ? 1 : last + 1;
    for (std::size_t i = 0; i < tries; ++i) {
        const std::size_t position = backwards ? last - i : i;
        if (matchesAt(*string, position, *toFind, options))
            return CFRangeMake(static_cast<CFIndex>(position), toFind->length);
    }
    return none;
}

Boolean CFStringHasPrefix(CFStringRef string, CFStringRef prefix) {
    return hasAt(string, prefix, false);
}

Boolean CFStringHasSuffix(CFStringRef string, CFStringRef suffix) {
    return hasAt(string, suffix, true);
}

SInt32 CFStringGetIntValue(CFStringRef string) {
    if (string == nullptr) return 0;
    std::size_t i = 0;
    while (i < string->size() && (string->at(i) == ' ' || string->at(i) == '\t')) ++i;
    const bool negative = i < string->size() && string->at(i) == '-';
    if (i < string->size() && (string->at(i) == '-' || string->at(i) == '+')) ++i;
    const SInt64 limit = std::numeric_limits<SInt32>::max() + SInt64{negative};
    SInt64 value = 0;
    for (; i < string->size() && isDigit(string->at(i)); ++i)
        value = std::min<SInt64>(value * 10 + (string->at(i) - u'0'), limit);
    return static_cast<SInt32>(negative ? -value : value);
}

CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef, CFArrayRef array,
                                             CFStringRef separator) {
    if (array == nullptr || separator == nullptr) return nullptr;
    std::u16string text;
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        if (i > 0) text += osa::unitsOf(separator);
        text += osa::unitsOf(osa::cfCast<__CFString>(CFArrayGetValueAtIndex(array, i)));
    }
    return osa::createString(text);
}

CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef allocator, CFStringRef string,
                                                  CFStringRef separator) {
    if (string == nullptr || separator == nullptr) return nullptr;
    const CFMutableArrayRef parts = CFArrayCreateMutable(allocator, 0, &kCFTypeArrayCallBacks);
    if (parts == nullptr) return nullptr;
    for (std::size_t start = 0;;) {
        const std::size_t end =
            separator->length == 0 ? string->size() : findFrom(*string, *separator, start);
        const CFRange range =
            CFRangeMake(static_cast<CFIndex>(start), static_cast<CFIndex>(end - start));
        const auto part =
            CFRef<CFStringRef>::Adopt(CFStringCreateWithSubstring(allocator, string, range));
        if (part) CFArrayAppendValue(parts, part.get());
        if (end == string->size()) return parts;
        start = end + separator->size();
    }
}
