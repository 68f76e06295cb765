// Text getters.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>
#include <memory>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

/// The types whose data is text that std::string holds as it is.
bool IsByteText(const CAEDescReader& desc) {
    return desc.Is(typeChar) || desc.Is(typeApplicationURL) || desc.Is(typeFileURL) ||
           desc.Is(typeUTF8Text);
}

void GetBytes(const CAEDescReader& desc, std::string& bytes) {
    std::string data(static_cast<std::size_t>(AEGetDescDataSize(&desc.GetDesc())), '\0');
    desc.GetData(data.data(), static_cast<SInt32>(data.size()));
    bytes = std::move(data);
}

CFStringRef CreateFromBytes(const std::string& bytes, CFStringEncoding encoding) {
    const CFStringRef string =
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                static_cast<CFIndex>(bytes.size()), encoding, false);
    FailNIL(string);
    return string;
}

}  // namespace

/// As `type`, by way of styled text when a converter refuses the text (paramErr) or, on request,
/// when there is no direct way.
void CAEDescReader::CoerceToText(DescType type, bool alsoWhenImpossible, CAEDesc& out) const {
    try {
        CoerceExactly(type, out);
    } catch (OSStatus status) {
        const bool mayRetry =
            status == paramErr || (alsoWhenImpossible && status == errAECoercionFail);
        if (!mayRetry || Is(typeStyledText)) throw;
        CAEDesc styled;
        CoerceExactly(typeStyledText, styled);
        styled.CoerceExactly(type, out);
    }
}

void CAEDescReader::GetString(TCLString& string) const {
    if (Is(typeUnicodeText)) {
        string = ToTCLString(&mDesc);
        return;
    }
    CAEDesc units;
    CoerceToText(typeUnicodeText, true, units);
    string = ToTCLString(&units.mDesc);
}

void CAEDescReader::GetString(std::string& string) const {
    CAEDesc text;
    if (IsByteText(*this)) {
        GetBytes(*this, string);
    } else if (Is(typeUnicodeText)) {
        CoerceTo(typeUTF8Text, text);
        GetBytes(text, string);
    } else {
        CoerceToText(typeChar, false, text);
        GetBytes(text, string);
    }
}

void CAEDescReader::GetString(CFStringRef* string) const {
    std::string bytes;
    if (Is(typeChar)) {
        GetString(bytes);
        *string = CreateFromBytes(bytes, CFStringGetSystemEncoding());
    } else if (Is(typeApplicationURL) || Is(typeFileURL) || Is(typeApplicationBundleID)) {
        GetBytes(*this, bytes);
        *string = CreateFromBytes(bytes, kCFStringEncodingUTF8);
    } else {
        TCLString units;
        GetString(units);
        const CFStringRef made = CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(),
                                                              static_cast<CFIndex>(units.size()));
        FailNIL(made);
        *string = made;
    }
}

void CAEDescReader::GetString(SCoreFoundation<CFStringRef>& string) const {
    CFStringRef made = nullptr;
    GetString(&made);
    string = made;
}

void CAEDescReader::GetString(CFMutableStringRef* string, SInt32 maxLength) const {
    SCoreFoundation<CFStringRef> immutable;
    GetString(immutable);
    const CFMutableStringRef made =
        CFStringCreateMutableCopy(kCFAllocatorDefault, maxLength, immutable);
    FailNIL(made);
    *string = made;
}

void CAEDescReader::GetString(SCoreFoundation<CFMutableStringRef>& string, SInt32 maxLength) const {
    CFMutableStringRef made = nullptr;
    GetString(&made, maxLength);
    string = made;
}

void CAEDescReader::GetStringData(std::string& data) const {
    if (IsByteText(*this)) {
        GetBytes(*this, data);
        return;
    }
    CAEDesc text;
    CoerceTo(typeUTF8Text, text);
    GetBytes(text, data);
}

CFDataRef CAEDescReader::GetCFData() const {
    std::string bytes;
    GetStringData(bytes);
    const CFDataRef data =
        CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                     static_cast<CFIndex>(bytes.size()));
    FailNIL(data);
    return data;
}

/// The bytes of the descriptor as 'TEXT'.
void CAEDescReader::GetTextBytes(std::string& bytes) const {
    if (Is(typeChar)) {
        GetBytes(*this, bytes);
        return;
    }
    CAEDesc text;
    CoerceToText(typeChar, false, text);
    GetBytes(text, bytes);
}

void CAEDescReader::GetPString(unsigned char* buffer, SInt32 maxLength) const {
    std::string bytes;
    GetTextBytes(bytes);
    const std::size_t most = static_cast<std::size_t>(std::clamp(maxLength, 0, 255));
    const std::size_t length = std::min(bytes.size(), most);
    buffer[0] = static_cast<unsigned char>(length);
    std::copy_n(bytes.begin(), length, buffer + 1);
}

void CAEDescReader::GetCString(char* buffer, SInt32 size) const {
    std::string bytes;
    GetTextBytes(bytes);
    if (size <= 0) return;
    const std::size_t length = std::min(bytes.size(), static_cast<std::size_t>(size) - 1);
    std::copy_n(bytes.begin(), length, buffer);
    buffer[length] = '\0';
}

char* CAEDescReader::CopyCString() const {
    std::string bytes;
    GetTextBytes(bytes);
    const Ptr block = NewPtr(static_cast<Size>(bytes.size() + 1));
    if (block == nullptr) FailOSErr(MemError());
    std::copy_n(bytes.c_str(), bytes.size() + 1, block);
    return block;
}
