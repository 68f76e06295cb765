// Aliases as dictionaries.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>
#include <OSA/AliasDescription.h>

#include <algorithm>
#include <new>

#include "platform/aliases/AliasContent.h"
#include "platform/aliases/AliasPlaces.h"
#include "platform/aliases/AliasTarget.h"
#include "platform/base/ByteWriter.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

using Kind = AliasContent::Kind;

/// Bytes that are no UTF-8 become U+FFFD.
std::u16string unitsOf(std::string_view text) {
    std::u16string units;
    if (utf16FromUTF8(text, units)) return units;
    units.clear();
    for (const char byte : text)
        units += static_cast<unsigned char>(byte) < 0x80 ? char16_t(byte) : u'\uFFFD';
    return units;
}

/// A dictionary that is being filled; what there is no memory for is left out.
class Description {
  public:
    Description()
        : entries_(CFRef<CFMutableDictionaryRef>::Adopt(
              CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                        &kCFTypeDictionaryValueCallBacks))) {}

    void put(CFStringRef key, std::string_view text) { putUnits(key, unitsOf(text)); }
    void putNumber(CFStringRef key, SInt64 number) {
        set(key, CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &number));
    }
    void putID(CFStringRef key, UInt32 id) {
        if (id != 0 && id != AliasRecord::kNoID) putNumber(key, id);
    }
    void putDate(CFStringRef key, AliasRecord::Date date) {
        if (date == 0) return;
        const double seconds = static_cast<double>(date) / 65536;
        set(key, CFDateCreate(kCFAllocatorDefault, seconds - kCFAbsoluteTimeIntervalSince1904));
    }
    /// Four characters, or fewer when zeros end them.
    void putCode(CFStringRef key, OSType code) {
        if (code == 0) return;
        std::string bytes = ByteWriter().fourCC(code).takeText();
        bytes.resize(bytes.find_last_not_of('\0') + 1);
        std::u16string units;
        decodeText(asBytes(bytes), kTextEncodingMacRoman, units);
        putUnits(key, units);
    }
    void putNumbers(CFStringRef key, const std::vector<UInt32>& numbers) {
        if (numbers.empty()) return;
        const auto array = CFRef<CFMutableArrayRef>::Adopt(
            CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
        for (const SInt64 number : numbers) {
            const auto value = CFRef<CFNumberRef>::Adopt(
                CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &number));
            if (array && value) CFArrayAppendValue(array.get(), value.get());
        }
        if (array) CFDictionarySetValue(entries_.get(), key, array.get());
    }
    bool isMade() const { return static_cast<bool>(entries_); }
    CFDictionaryRef leak() { return entries_.leak(); }

  private:
    void putUnits(CFStringRef key, const std::u16string& units) {
        if (units.empty()) return;
        set(key, CFStringCreateWithCharacters(kCFAllocatorDefault,
                                              reinterpret_cast<const UniChar*>(units.data()),
                                              static_cast<CFIndex>(units.size())));
    }
    void set(CFStringRef key, CFTypeRef owned) {
        const auto value = CFRef<CFTypeRef>::Adopt(owned);
        if (value) CFDictionarySetValue(entries_.get(), key, value.get());
    }

    CFRef<CFMutableDictionaryRef> entries_;
};

std::string classicPath(const AliasRecord& record) {
    std::string path;
    for (const std::string& component : record.macPath) {
        if (&component != &record.macPath.front()) path += ':';
        std::string shown = component;
        std::ranges::replace(shown, ':', '/');
        path += shown;
    }
    return path;
}

void describeRecord(const AliasRecord& record, Description& description) {
    if (record.version != 0) {
        description.putNumber(CFSTR("version"), record.version);
        description.put(CFSTR("targetKind"), record.isFolder ? "folder" : "file");
        // Of two characters in records of version 2.
        description.putCode(CFSTR("fileSystem"), OSType{record.fileSystem} << 16);
    }
    description.put(CFSTR("targetName"), record.targetName);
    description.put(CFSTR("parentName"), record.parentName);
    description.put(CFSTR("volumeName"), record.volumeName);
    description.put(CFSTR("zone"), record.zoneName);
    description.put(CFSTR("server"), record.serverName);
    description.put(CFSTR("recordedPath"), absolutePath(record));
    description.put(CFSTR("classicPath"), classicPath(record));
    description.putID(CFSTR("targetID"), record.targetID);
    description.putID(CFSTR("parentID"), record.parentID);
    description.putNumbers(CFSTR("folderIDs"), record.folderIDs);
    description.putDate(CFSTR("targetCreated"), record.targetCreated);
    description.putDate(CFSTR("volumeCreated"), record.volumeCreated);
    description.putCode(CFSTR("type"), record.type);
    description.putCode(CFSTR("creator"), record.creator);
    description.putCode(CFSTR("userType"), record.userType);
    if (record.version == 0 || record.levelsUp < 0) return;
    description.putNumber(CFSTR("levelsUp"), record.levelsUp);
    description.putNumber(CFSTR("levelsDown"), record.levelsDown);
}

const char* nameOf(FoundBy by) {
    switch (by) {
        case FoundBy::relation:
            return "way from the alias";
        case FoundBy::path:
            return "path";
        case FoundBy::number:
            return "number";
        case FoundBy::name:
            return "name";
        case FoundBy::walk:
            return "search";
    }
    return "";
}

const char* nameOf(Kind kind, bool isBare) {
    if (kind == Kind::link) return "symbolic link";
    if (kind == Kind::bookmark) return "bookmark";
    return isBare ? "alias record" : "alias file";
}

struct Lead {
    FSRef target;
    const char* foundBy;
};

Result<Lead> follow(const Located& object, const AliasContent& content) {
    if (content.kind == Kind::link) {
        OSA_TRY(const FSRef target, referenceToPath(object.path(), nullptr));
        return Lead{target, "link"};
    }
    OSA_TRY(const AliasTarget target,
            findAliasTarget(content.record, std::string(object.folder()), SearchRules()));
    return Lead{target.ref, nameOf(target.by)};
}

Result<Located> objectAt(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    if (!path.starts_with('/')) path = joinPath(posix::currentFolder(), path);
    const std::size_t slash = path.rfind('/');
    OSA_TRY(const std::string folder, posix::realPath(slash == 0 ? "/" : path.substr(0, slash)));
    Located object(folder, std::string_view(path).substr(slash + 1));
    OSA_TRY(object.status, posix::status(object.path(), posix::Follow::no));
    return object;
}

Result<CFDictionaryRef> describe(const char* path) {
    OSA_TRY(const Located object, objectAt(path));
    OSA_TRY(AliasContent content, aliasContent(object));
    const bool isBare = content.kind == Kind::none;
    if (isBare) {
        OSA_TRY(content, bareAliasContent(object));
    }
    if (content.kind == Kind::none || content.kind == Kind::damaged) return Failure(mapReadErr);
    Description description;
    if (!description.isMade()) return Failure(memFullErr);
    description.put(CFSTR("kind"), nameOf(content.kind, isBare));
    if (content.kind == Kind::link) {
        description.put(CFSTR("recordedPath"), content.link);
    } else {
        describeRecord(content.record, description);
    }
    const auto lead = follow(object, content);
    description.putNumber(CFSTR("status"), lead.status());
    if (lead.ok()) {
        const auto target = describeReference(&lead->target);
        if (target.ok()) description.put(CFSTR("leadsTo"), target->path());
        description.put(CFSTR("foundBy"), lead->foundBy);
    }
    return description.leak();
}

}  // namespace
}  // namespace osa

OSStatus OSACopyAliasDescription(const char* path, CFDictionaryRef* description) {
    if (path == nullptr || description == nullptr) return paramErr;
    *description = nullptr;
    try {
        const auto made = osa::describe(path);
        if (made.ok()) *description = *made;
        return made.status();
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
