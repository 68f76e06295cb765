// Tells where an object's parts are kept, and what AppleDouble files say besides.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>
#include <OSA/FileParts.h>

#include <new>

#include "platform/files/formats/AppleDouble.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

constexpr std::uint64_t kLongestText = 4096;

using Dictionary = CFRef<CFMutableDictionaryRef>;
using Array = CFRef<CFMutableArrayRef>;

Dictionary makeDictionary() {
    return Dictionary::Adopt(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

Array makeArray() {
    return Array::Adopt(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
}

/// Paths and names are bytes to the kernel: what is no UTF-8 is told as Mac Roman.
CFRef<CFStringRef> text(const std::string& bytes, CFStringEncoding encoding) {
    const auto* const data = reinterpret_cast<const UInt8*>(bytes.data());
    const auto length = static_cast<CFIndex>(bytes.size());
    auto made = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, data, length, encoding, 0));
    if (made) return made;
    return CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, data, length, kCFStringEncodingMacRoman, 0));
}

void setText(const Dictionary& target, CFStringRef key, const std::string& bytes,
             CFStringEncoding encoding = kCFStringEncodingUTF8) {
    const auto value = text(bytes, encoding);
    if (value) CFDictionarySetValue(target.get(), key, value.get());
}

void setDate(const Dictionary& target, CFStringRef key, std::optional<std::int64_t> seconds) {
    if (!seconds) return;
    const auto date = CFRef<CFDateRef>::Adopt(CFDateCreate(
        kCFAllocatorDefault, static_cast<double>(*seconds) - kCFAbsoluteTimeIntervalSince1970));
    CFDictionarySetValue(target.get(), key, date.get());
}

void setEntry(const Dictionary& target, CFStringRef key, const AppleDouble& file,
              AppleDouble::EntryID id) {
    const AppleDouble::Entry* const entry = file.find(id);
    if (entry == nullptr || entry->range.length == 0 || entry->range.length > kLongestText) return;
    const auto content = file.content(id);
    const auto bytes = readRange(*content, {0, content->size()});
    if (!bytes.ok()) return;
    const ByteSpan span = *bytes;
    setText(target, key, {reinterpret_cast<const char*>(span.data()), span.size()},
            kCFStringEncodingMacRoman);
}

void describe(const Dictionary& target, const AppleDouble& file) {
    CFDictionarySetValue(target.get(), kOSAPlaceForm, CFSTR("AppleDouble"));
    if (const auto dates = file.dates(); dates.ok()) {
        setDate(target, kOSAPlaceCreated, dates->created);
        setDate(target, kOSAPlaceModified, dates->modified);
        setDate(target, kOSAPlaceBackedUp, dates->backedUp);
        setDate(target, kOSAPlaceAccessed, dates->accessed);
    }
    setEntry(target, kOSAPlaceRealName, file, AppleDouble::realName);
    setEntry(target, kOSAPlaceComment, file, AppleDouble::comment);
    const auto attributes = file.attributes();
    if (!attributes.ok() || attributes->empty()) return;
    const Array names = makeArray();
    for (const AppleDouble::Attribute& each : *attributes) {
        CFArrayAppendValue(names.get(), text(each.name, kCFStringEncodingUTF8).get());
    }
    CFDictionarySetValue(target.get(), kOSAPlaceAttributes, names.get());
}

const void* formName(PartPlace::Form form) {
    switch (form) {
        case PartPlace::Form::afpInfo:
            return CFSTR("AfpInfo");
        case PartPlace::Form::appleDouble:
            return CFSTR("AppleDouble");
        case PartPlace::Form::bare:
        case PartPlace::Form::zeroEnded:
            break;
    }
    return CFSTR("bare");
}

void addPlaces(const Array& places, const StoredParts& parts, const std::vector<PartPlace>& added) {
    for (const PartPlace& each : added) {
        const Dictionary place = makeDictionary();
        if (each.attribute != nullptr) {
            setText(place, kOSAPlaceAttribute, each.attribute);
        } else {
            setText(place, kOSAPlacePath, parts.witnesses[each.witness].path);
        }
        CFDictionarySetValue(place.get(), kOSAPlaceForm, formName(each.form));
        if (each.isBlank) CFDictionarySetValue(place.get(), kOSAPlaceIsBlank, kCFBooleanTrue);
        CFArrayAppendValue(places.get(), place.get());
    }
}

/// What is no AppleDouble, or cannot be read, is nothing to tell of.
void addAppleDouble(const Array& places, CFStringRef key, const std::string& where,
                    Result<std::shared_ptr<const ByteSource>> source) {
    if (!source.ok()) return;
    const auto file = AppleDouble::parse(std::move(*source));
    if (!file.ok()) return;
    const Dictionary place = makeDictionary();
    setText(place, key, where);
    describe(place, *file);
    CFArrayAppendValue(places.get(), place.get());
}

void addAppleDoubles(const Array& places, const Located& object, const StoredParts& parts) {
    for (const Witness& witness : parts.witnesses) {
        if (!witness.seen || !witness.seen->isRegular() || witness.path == object.path()) continue;
        addAppleDouble(places, kOSAPlacePath, witness.path, posix::openSource(witness.path));
    }
    for (const PartPlace& place : parts.infoPlaces) {
        if (place.attribute == nullptr || place.form != PartPlace::Form::appleDouble) continue;
        auto value = posix::attribute(object.path(), place.attribute);
        if (!value.ok()) continue;
        const std::shared_ptr<const ByteSource> source =
            std::make_shared<MemorySource>(std::move(*value));
        addAppleDouble(places, kOSAPlaceAttribute, place.attribute, source);
    }
}

Result<CFDictionaryRef> copyFileParts(const FSRef* ref) {
    OSA_TRY(const Located object, locate(ref));
    // askEveryStore answers references into the thread's memory: nothing here asks again.
    OSA_TRY(const auto stores, askEveryStore(object));
    const Array info = makeArray(), fork = makeArray(), files = makeArray();
    for (const StoredParts* const parts : stores) {
        addPlaces(info, *parts, parts->infoPlaces);
        addPlaces(fork, *parts, parts->forkPlaces);
        addAppleDoubles(files, object, *parts);
    }
    Dictionary all = makeDictionary();
    CFDictionarySetValue(all.get(), kOSAFinderInfoPlaces, info.get());
    CFDictionarySetValue(all.get(), kOSAResourceForkPlaces, fork.get());
    CFDictionarySetValue(all.get(), kOSAAppleDoublePlaces, files.get());
    return CFDictionaryRef{all.leak()};
}

}  // namespace
}  // namespace osa

OSStatus OSACopyFileParts(const FSRef* ref, CFDictionaryRef* parts) try {
    if (parts == nullptr) return paramErr;
    *parts = nullptr;
    const auto made = osa::copyFileParts(ref);
    if (made.ok()) *parts = *made;
    return made.status();
} catch (const std::bad_alloc&) {
    return memFullErr;
}
