// CFString's storage, class record, constants and bridges to C++ strings.
#include "platform/cf/StringObject.h"

#include <cstring>
#include <map>
#include <mutex>

#include "platform/text/TextConverter.h"

namespace osa {

namespace {

/// Room for `size` bytes of text behind the header; null when memory fails.
__CFString* allocate(bool wide, std::size_t unitCount) {
    const std::size_t size = wide ? unitCount * sizeof(char16_t) : unitCount + 1;
    void* const block = ::operator new(sizeof(__CFString) + size, std::nothrow);
    if (block == nullptr) return nullptr;
    auto* const string = new (block) __CFString(wide, false, static_cast<CFIndex>(unitCount));
    char* const text = reinterpret_cast<char*>(string + 1);
    if (!wide) text[unitCount] = 0;
    string->bytes = text;
    noteObjectMade();
    return string;
}

void finalizeString(CFObject* object) {
    auto* const string = static_cast<__CFString*>(object);
    if (string->isMutable) {
        delete static_cast<MutableString*>(string);
    } else {
        string->~__CFString();
        ::operator delete(string);
    }
    noteObjectGone();
}

bool equalStrings(const CFObject* a, const CFObject* b) {
    const auto& first = *static_cast<const __CFString*>(a);
    const auto& second = *static_cast<const __CFString*>(b);
    if (first.length != second.length) return false;
    if (!first.isWide && !second.isWide) return first.macRoman() == second.macRoman();
    if (first.isWide && second.isWide) return first.wide() == second.wide();
    for (std::size_t i = 0; i < first.size(); ++i)
        if (first.at(i) != second.at(i)) return false;
    return true;
}

CFHashCode hashString(const CFObject* object) {
    const auto& string = *static_cast<const __CFString*>(object);
    CFHashCode hash = 0xCBF29CE484222325u;
    for (std::size_t i = 0; i < string.size(); ++i) hash = (hash ^ string.at(i)) * 0x100000001B3u;
    return hash;
}

std::string describeString(const CFObject* object) {
    return utf8Of(static_cast<const __CFString*>(object));
}

}  // namespace

CFStringRef createMacRomanString(ByteSpan bytes) {
    __CFString* const string = allocate(false, bytes.size());
    if (string != nullptr && !bytes.empty())
        std::memcpy(const_cast<char*>(string->bytes), bytes.data(), bytes.size());
    return string;
}

CFStringRef createString(std::u16string_view units) {
    __CFString* const string = allocate(true, units.size());
    if (string != nullptr && !units.empty())
        std::memcpy(const_cast<char16_t*>(string->units), units.data(), units.size() * 2);
    return string;
}

CFStringRef createString(std::string_view utf8) {
    if (isASCII(asBytes(utf8))) return createMacRomanString(asBytes(utf8));
    try {
        std::u16string units;
        return utf16FromUTF8(utf8, units) ? createString(units) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::u16string unitsOf(CFStringRef string, std::size_t location, std::size_t count) {
    if (string->isWide) return std::u16string(string->wide().substr(location, count));
    std::u16string units(count, u'\0');
    for (std::size_t i = 0; i < count; ++i) units[i] = string->at(location + i);
    return units;
}

std::u16string unitsOf(CFStringRef string) {
    return string == nullptr ? std::u16string() : unitsOf(string, 0, string->size());
}

std::string utf8Of(CFStringRef string) {
    if (string == nullptr) return {};
    if (!string->isWide && isASCII(asBytes(string->macRoman())))
        return std::string(string->macRoman());
    return utf8FromUTF16(unitsOf(string));
}

bool isString(CFTypeRef ref, std::string_view ascii) {
    const auto* const string = cfCast<__CFString>(ref);
    if (string == nullptr || string->size() != ascii.size()) return false;
    for (std::size_t i = 0; i < ascii.size(); ++i)
        if (string->at(i) != static_cast<unsigned char>(ascii[i])) return false;
    return true;
}

}  // namespace osa

constinit const osa::ClassRecord __CFString::kClass{
    "CFString", osa::finalizeString, osa::equalStrings, osa::hashString, osa::describeString};

CFStringRef OSAConstantString(const char* text) {
    static std::mutex mutex;
    // Never destroyed: constants are used until the very end of the process.
    static auto& constants = *new std::map<std::string, CFStringRef, std::less<>>;
    const std::lock_guard lock(mutex);
    const auto found = constants.find(std::string_view(text));
    if (found != constants.end()) return found->second;
    const CFStringRef string = osa::createString(std::string_view(text));
    if (string == nullptr) return nullptr;
    string->count = osa::CFObject::kImmortal;
    osa::noteObjectGone();
    constants.emplace(text, string);
    return string;
}
