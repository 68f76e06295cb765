// The stored form, read and written.
#include "platform/osa/javascript/Storage.h"

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <OpenScripting/OSA.h>

#include <vector>

#include "platform/base/ByteWriter.h"
#include "platform/osa/StoredScripts.h"

namespace osa::script {
namespace {

constexpr std::string_view kHeader = "JsOsaDAS1.001.00";

const UniChar* unitsOf(const std::u16string& text) {
    return reinterpret_cast<const UniChar*>(text.data());
}

CFRef<CFStringRef> stringOf(const std::u16string& text) {
    return CFRef<CFStringRef>::Adopt(CFStringCreateWithCharacters(
        kCFAllocatorDefault, unitsOf(text), static_cast<CFIndex>(text.size())));
}

CFRef<CFDataRef> dataOf(ByteSpan bytes) {
    return CFRef<CFDataRef>::Adopt(CFDataCreate(kCFAllocatorDefault,
                                                reinterpret_cast<const UInt8*>(bytes.data()),
                                                static_cast<CFIndex>(bytes.size())));
}

ByteSpan bytesOf(CFDataRef data) {
    return {reinterpret_cast<const std::byte*>(CFDataGetBytePtr(data)),
            static_cast<std::size_t>(CFDataGetLength(data))};
}

/// Complemented, so that nobody reads or finds the source by accident. It is no secret.
std::vector<std::byte> encoded(const std::u16string& text) {
    ByteWriter writer;
    for (const char16_t unit : text) writer.u16(static_cast<std::uint16_t>(~unit));
    return writer.take();
}

bool decode(ByteSpan bytes, std::u16string* text) {
    if (bytes.size() % 2 != 0) return false;
    text->reserve(bytes.size() / 2);
    for (ByteReader reader(bytes); !reader.atEnd();)
        text->push_back(static_cast<char16_t>(~reader.u16()));
    return true;
}

void readString(CFStringRef string, std::u16string* text) {
    text->resize(static_cast<std::size_t>(CFStringGetLength(string)));
    CFStringGetCharacters(string, CFRangeMake(0, CFStringGetLength(string)),
                          reinterpret_cast<UniChar*>(text->data()));
}

bool readList(CFTypeRef list, StoredSource* source) {
    if (list == nullptr || CFGetTypeID(list) != CFDictionaryGetTypeID()) return false;
    const auto dictionary = static_cast<CFDictionaryRef>(list);
    const void* value = CFDictionaryGetValue(dictionary, CFSTR("script"));
    if (value != nullptr && CFGetTypeID(value) == CFStringGetTypeID()) {
        readString(static_cast<CFStringRef>(value), &source->text);
        return true;
    }
    value = CFDictionaryGetValue(dictionary, CFSTR("runOnly"));
    source->runOnly = true;
    return value != nullptr && CFGetTypeID(value) == CFDataGetTypeID() &&
           decode(bytesOf(static_cast<CFDataRef>(value)), &source->text);
}

CFRef<CFDictionaryRef> listOf(const StoredSource& source) {
    CFRef<CFStringRef> text = stringOf(source.runOnly ? std::u16string() : source.text);
    CFRef<CFDataRef> hidden;
    if (source.runOnly) hidden = dataOf(encoded(source.text));
    const void* key = source.runOnly ? CFSTR("runOnly") : CFSTR("script");
    const void* value = text.get();
    if (source.runOnly) value = hidden.get();
    if (value == nullptr) return {};
    return CFRef<CFDictionaryRef>::Adopt(CFDictionaryCreate(kCFAllocatorDefault, &key, &value, 1,
                                                            &kCFTypeDictionaryKeyCallBacks,
                                                            &kCFTypeDictionaryValueCallBacks));
}

}  // namespace

OSErr readStored(ByteSpan bytes, StoredSource* source) {
    const Result<StoredScript> stored = parseStoredScript(bytes);
    if (!stored) return static_cast<OSErr>(stored.status());
    if (stored->subType != kJavaScript) return errOSABadStorageType;
    ByteReader body(stored->body);
    if (body.text(kHeader.size()) != kHeader) return errOSACorruptData;
    const CFRef<CFDataRef> data = dataOf(body.rest());
    if (!data) return memFullErr;
    CFPropertyListFormat format = 0;
    const auto list = CFRef<CFPropertyListRef>::Adopt(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, &format, nullptr));
    const bool binary = format == kCFPropertyListBinaryFormat_v1_0;
    return binary && readList(list.get(), source) ? OSErr(noErr) : OSErr(errOSACorruptData);
}

OSErr writeStored(const StoredSource& source, AEDesc* desc) {
    const CFRef<CFDictionaryRef> list = listOf(source);
    if (!list) return memFullErr;
    const auto data = CFRef<CFDataRef>::Adopt(CFPropertyListCreateData(
        kCFAllocatorDefault, list.get(), kCFPropertyListBinaryFormat_v1_0, 0, nullptr));
    if (!data) return memFullErr;
    ByteWriter body;
    body.text(kHeader).bytes(bytesOf(data.get()));
    const std::vector<std::byte> bytes = makeStoredScript(body.view(), kJavaScript);
    if (bytes.size() > 0x7FFFFFFF) return memFullErr;
    return AECreateDesc(typeOSAGenericStorage, bytes.data(), static_cast<Size>(bytes.size()), desc);
}

}  // namespace osa::script
