// Conversions from Core Foundation strings and data.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <memory>
#include <new>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

namespace {

constexpr char kUnit[] = "Libraries/MacToolboxLib/TCLString";
constexpr CFIndex kMaxNameUnits = 255;

/// A temporary buffer; memFullErr when there is none to be had.
template <typename T>
std::unique_ptr<T[]> NewBuffer(CFIndex count) {
    std::unique_ptr<T[]> buffer(new (std::nothrow) T[static_cast<std::size_t>(count)]);
    FailNIL(buffer.get());
    return buffer;
}

}  // namespace

void FromCFString(CFStringRef s, unsigned char* d, UInt32 encoding) {
    if (s == nullptr) {
        if (d != nullptr) d[0] = 0;
        return;
    }
    TB_ASSERT(kUnit, d);
    TB_ASSERT(kUnit, CFStringGetLength(s) <= 255);
    // One less than the buffer holds: the longest string that converts has 254 bytes.
    constexpr CFIndex limit = 255;
    if (!CFStringGetPascalString(s, d, limit, encoding)) FailOSErr(cfStringConversionErr);
}

void FromCFString(CFStringRef s, HFSUniStr255& name) {
    name.length = 0;
    if (s == nullptr) return;
    const CFIndex length = std::min(CFStringGetLength(s), kMaxNameUnits);
    CFStringGetCharacters(s, CFRangeMake(0, length), name.unicode);
    name.length = static_cast<UInt16>(length);
}

void FromCFString(CFStringRef s, std::string& out, UInt32 encoding) {
    const CFIndex length = s == nullptr ? 0 : CFStringGetLength(s);
    if (length == 0) {
        out.clear();
        return;
    }
    const CFIndex room = CFStringGetMaximumSizeForEncoding(length, encoding) + 10;
    const auto buffer = NewBuffer<char>(room);
    CFIndex used = 0;
    const CFIndex converted = CFStringGetBytes(s, CFRangeMake(0, length), encoding, 0, false,
                                               reinterpret_cast<UInt8*>(buffer.get()), room, &used);
    if (converted == 0) FailOSErr(cfStringConversionErr);
    out.assign(buffer.get(), static_cast<std::size_t>(used));
}

void FromCFString(CFStringRef s, TCLString& out, UInt32 /*encoding*/) {
    const bool isString = s != nullptr && CFGetTypeID(s) == CFStringGetTypeID();
    const CFIndex length = isString ? CFStringGetLength(s) : 0;
    if (length == 0) {
        out.clear();
        return;
    }
    if (const UniChar* const units = CFStringGetCharactersPtr(s)) {
        out.assign(units, static_cast<std::size_t>(length));
        return;
    }
    const auto buffer = NewBuffer<UniChar>(length);
    CFStringGetCharacters(s, CFRangeMake(0, length), buffer.get());
    out.assign(buffer.get(), static_cast<std::size_t>(length));
}

void FromCFData(CFDataRef data, std::string& out) {
    const CFIndex length = data == nullptr ? 0 : CFDataGetLength(data);
    if (length == 0) {
        out.clear();
    } else {
        out.assign(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
                   static_cast<std::size_t>(length));
    }
}

void FromTCLString(const TCLString& s, HFSUniStr255& name) {
    const std::size_t length = std::min<std::size_t>(s.size(), kMaxNameUnits);
    std::copy_n(s.data(), length, name.unicode);
    name.length = static_cast<UInt16>(length);
}
