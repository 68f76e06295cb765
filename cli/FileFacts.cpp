// Gathers the facts of a file, and writes them for people.
#include "cli/FileFacts.h"

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/MacErrors.h>
#include <OSA/FileParts.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "cli/RecordFormat.h"
#include "cli/ResourceSelector.h"

namespace osa::cli {
namespace {

struct FlagName {
    UInt16 flag;
    const char* name;
};
constexpr std::array<FlagName, 10> kFlagNames = {{{kIsAlias, "alias"},
                                                  {kIsInvisible, "invisible"},
                                                  {kHasBundle, "has bundle"},
                                                  {kNameLocked, "name locked"},
                                                  {kIsStationery, "stationery"},
                                                  {kHasCustomIcon, "custom icon"},
                                                  {kHasBeenInited, "inited"},
                                                  {kHasNoINITs, "no INITs"},
                                                  {kIsShared, "shared"},
                                                  {kIsOnDesk, "on desk"}}};

Json codeValue(OSType code) {
    if (code == 0) return nullptr;
    std::array<unsigned char, 4> bytes;
    for (std::size_t i = 0; i < 4; ++i) bytes[i] = static_cast<UInt8>(code >> (24 - 8 * i));
    return macRomanText(bytes.data(), bytes.size());
}

Json nameValue(const HFSUniStr255& name) {
    return toUTF8(CFRef<CFStringRef>::Adopt(
                      CFStringCreateWithCharacters(kCFAllocatorDefault, name.unicode, name.length))
                      .get());
}

Json flagNames(UInt16 flags) {
    Json names = Json::array();
    for (const FlagName& each : kFlagNames) {
        if ((flags & each.flag) != 0) names.push_back(each.name);
    }
    return names;
}

void setDate(Json& facts, const char* key, const UTCDateTime& date) {
    const auto seconds =
        static_cast<double>(UInt64{date.highSeconds} << 32 | UInt64{date.lowSeconds});
    // Zero stands for "not known".
    if (seconds == 0) return;
    facts[key] =
        jsonValue(CFRef<CFDateRef>::Adopt(
                      CFDateCreate(kCFAllocatorDefault, seconds - kCFAbsoluteTimeIntervalSince1904))
                      .get());
}

/// A package's type and creator are in it, not in its Finder information.
bool packageInfo(const FSRef& ref, OSType& type, OSType& creator) {
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    if (!url) return false;
    const auto bundle = CFRef<CFBundleRef>::Adopt(CFBundleCreate(kCFAllocatorDefault, url.get()));
    if (!bundle) return false;
    CFBundleGetPackageInfo(bundle.get(), &type, &creator);
    return true;
}

void addKind(const FSRef& ref, const FSCatalogInfo& info, Json& facts) {
    OSType type = info.finderInfo.fdType;
    OSType creator = info.finderInfo.fdCreator;
    if ((info.nodeFlags & kFSNodeIsDirectoryMask) == 0) {
        facts["kind"] = "file";
    } else {
        // What a file's type and creator are is a folder's window.
        type = creator = 0;
        facts["kind"] = packageInfo(ref, type, creator) ? "package" : "folder";
    }
    facts["type"] = codeValue(type);
    facts["creator"] = codeValue(creator);
    facts["flags"] = flagNames(info.finderInfo.fdFlags);
    facts["label"] = (info.finderInfo.fdFlags & kColor) >> 1;
}

void addCatalog(const FSCatalogInfo& info, Json& facts) {
    setDate(facts, "created", info.createDate);
    setDate(facts, "modified", info.contentModDate);
    setDate(facts, "accessed", info.accessDate);
    setDate(facts, "backedUp", info.backupDate);
    if ((info.nodeFlags & kFSNodeIsDirectoryMask) == 0) {
        facts["dataForkSize"] = info.dataLogicalSize;
        facts["resourceForkSize"] = info.rsrcLogicalSize;
    }
    std::array<char, 8> mode;
    std::snprintf(mode.data(), mode.size(), "%04o", info.permissions.mode & 07777u);
    facts["mode"] = mode.data();
    facts["locked"] = (info.nodeFlags & kFSNodeLockedMask) != 0;
    facts["nodeID"] = info.nodeID;
}

std::string dateOrText(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/// "attribute user.com.apple.FinderInfo (bare)", "d/._Script (Comment draft, Created 2004-…)"
std::string placeText(const Json& place) {
    std::string text = place.contains("Attribute")
                           ? "attribute " + place["Attribute"].get<std::string>()
                           : place.value("Path", std::string());
    std::string more;
    for (const auto& [key, value] : place.items()) {
        if (key == "Path" || key == "Attribute") continue;
        if (key == "IsBlank") {
            more += ", blank";
        } else if (key == "Form") {
            more += ", " + value.get<std::string>();
        } else {
            more += ", " + key + " " + dateOrText(value);
        }
    }
    if (!more.empty()) text += " (" + more.substr(2) + ")";
    return text;
}

std::string joined(const Json& names) {
    std::string text;
    for (const Json& each : names) {
        text += (text.empty() ? "" : ", ") + each.get<std::string>();
    }
    return text.empty() ? "none" : text;
}

std::vector<std::string> valueLines(const std::string& key, const Json& value) {
    if (key == "flags") return {joined(value)};
    if (value.is_array()) {
        std::vector<std::string> lines;
        for (Json place : value) {
            // The form is in the label; where it is, the lines above have told.
            if (key == "appleDouble") place.erase("Form");
            if (key != "appleDouble" || place.size() > 1) lines.push_back(placeText(place));
        }
        return lines;
    }
    if (value.is_null()) return {"none"};
    if (value.is_boolean()) return {value.get<bool>() ? "yes" : "no"};
    if (key == "type" || key == "creator") return {"'" + value.get<std::string>() + "'"};
    if (key.ends_with("ForkSize")) return {value.dump() + " bytes"};
    return {dateOrText(value)};
}

}  // namespace

OSStatus gatherFacts(const FSRef& ref, const std::string& path, Json& facts) {
    FSCatalogInfo info;
    HFSUniStr255 name;
    // All that can be had, but for the count of a folder's children.
    constexpr FSCatalogInfoBitmap kAll = kFSCatInfoGettableInfo & ~kFSCatInfoValence;
    OSStatus status = FSGetCatalogInfo(&ref, kAll, &info, nullptr, nullptr, nullptr);
    if (status != noErr) return status;
    facts = Json{{"path", toValidUTF8(path)}};
    // Some names have no Unicode form; they are still in the path.
    if (FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr) == noErr) {
        facts["name"] = nameValue(name);
    }
    addKind(ref, info, facts);
    addCatalog(info, facts);
    HFSUniStr255 volume;
    if (FSGetVolumeInfo(info.volume, 0, nullptr, kFSVolInfoNone, nullptr, &volume, nullptr) ==
        noErr) {
        facts["volume"] = nameValue(volume);
    }
    CFDictionaryRef parts = nullptr;
    status = OSACopyFileParts(&ref, &parts);
    if (status != noErr) return status;
    const auto holder = CFRef<CFDictionaryRef>::Adopt(parts);
    const auto places = [parts](CFStringRef key) {
        return jsonValue(CFDictionaryGetValue(parts, key));
    };
    facts["finderInfoIn"] = places(kOSAFinderInfoPlaces);
    facts["resourceForkIn"] = places(kOSAResourceForkPlaces);
    facts["appleDouble"] = places(kOSAAppleDoublePlaces);
    return noErr;
}

std::string factsAsText(const Json& facts) {
    static const std::array<std::pair<const char*, const char*>, 19> kLabels = {
        {{"name", "name"},
         {"kind", "kind"},
         {"type", "type"},
         {"creator", "creator"},
         {"flags", "Finder flags"},
         {"label", "label"},
         {"created", "created"},
         {"modified", "modified"},
         {"accessed", "accessed"},
         {"backedUp", "backed up"},
         {"dataForkSize", "data fork"},
         {"resourceForkSize", "resource fork"},
         {"mode", "mode"},
         {"locked", "locked"},
         {"nodeID", "node ID"},
         {"volume", "volume"},
         {"finderInfoIn", "Finder info in"},
         {"resourceForkIn", "resource fork in"},
         {"appleDouble", "AppleDouble"}}};
    std::string text = forTerminal(facts.value("path", std::string())) + "\n";
    for (const auto& [key, label] : kLabels) {
        if (!facts.contains(key)) continue;
        for (const std::string& line : valueLines(key, facts[key])) {
            std::array<char, 32> start;
            std::snprintf(start.data(), start.size(), "    %-16s = ", label);
            text += start.data() + forTerminal(line) + "\n";
        }
    }
    return text;
}

}  // namespace osa::cli
