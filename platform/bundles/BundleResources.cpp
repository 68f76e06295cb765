// CFBundle: finding resources, localised strings, and the resource map.
#include <CoreServices/Files.h>
#include <CoreServices/Resources.h>

#include <array>
#include <string_view>

#include "platform/bundles/Bundle.h"
#include "platform/cf/StringObject.h"
#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

constinit const __CFString kDefaultTable{"Localizable"};

/// Names that folders of older bundles carry for a language code.
struct LanguageName {
    std::string_view code;
    std::string_view name;
};
constexpr std::array<LanguageName, 12> kLanguageNames = {{{"en", "English"},
                                                          {"fr", "French"},
                                                          {"de", "German"},
                                                          {"ja", "Japanese"},
                                                          {"es", "Spanish"},
                                                          {"it", "Italian"},
                                                          {"nl", "Dutch"},
                                                          {"sv", "Swedish"},
                                                          {"da", "Danish"},
                                                          {"fi", "Finnish"},
                                                          {"no", "Norwegian"},
                                                          {"pt", "Portuguese"}}};

/// "de_AT.UTF-8" gives de_AT, de, German.
void addLanguage(const std::string& locale, std::vector<std::string>& languages) {
    const std::string plain = locale.substr(0, locale.find_first_of(".@"));
    if (plain.empty() || plain == "C" || plain == "POSIX") return;
    const std::string code = plain.substr(0, plain.find_first_of("_-"));
    languages.push_back(plain);
    if (code != plain) languages.push_back(code);
    for (const LanguageName& each : kLanguageNames) {
        if (each.code == code) languages.emplace_back(each.name);
        if (each.name == plain) languages.emplace_back(each.code);
    }
}

std::vector<std::string> userLanguages() {
    std::vector<std::string> languages;
    std::string list = posix::environment("LANGUAGE");
    while (!list.empty()) {
        const std::size_t colon = list.find(':');
        addLanguage(list.substr(0, colon), languages);
        list = colon == std::string::npos ? std::string() : list.substr(colon + 1);
    }
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const std::string locale = posix::environment(name); !locale.empty()) {
            addLanguage(locale, languages);
            break;
        }
    }
    return languages;
}

bool exists(const std::string& path) {
    return posix::status(path, posix::Follow::yes).ok();
}

std::string joined(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + "/" + name;
}

std::string utf8OrEmpty(CFStringRef string) {
    return string == nullptr ? std::string() : utf8Of(string);
}

/// An entry of a strings table in the resources folder or a localised one.
CFRef<CFStringRef> localizedEntry(CFBundleRef bundle, CFStringRef key, CFStringRef table) {
    const auto url =
        CFRef<CFURLRef>::Adopt(CFBundleCopyResourceURL(bundle, table, CFSTR("strings"), nullptr));
    char path[4096];
    if (!url || !CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(path),
                                                  sizeof path)) {
        return {};
    }
    const CFRef<CFDictionaryRef> entries = readDictionaryFile(path);
    const CFTypeRef value = entries ? CFDictionaryGetValue(entries.get(), key) : nullptr;
    if (cfCast<__CFString>(value) == nullptr) return {};
    return CFRef<CFStringRef>::Retain(static_cast<CFStringRef>(value));
}

}  // namespace

std::vector<std::string> localizedFolders(CFBundleRef bundle) {
    std::vector<std::string> languages = userLanguages();
    addLanguage(bundle->informationText(kCFBundleDevelopmentRegionKey), languages);
    addLanguage("en", languages);
    std::vector<std::string> folders;
    for (const std::string& language : languages) {
        folders.push_back(bundle->layout.resources + "/" + language + ".lproj");
    }
    return folders;
}

}  // namespace osa

CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle) {
    return bundle == nullptr ? nullptr : osa::makeFileURL(bundle->layout.resources, true).leak();
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef subDirectory) {
    if (bundle == nullptr || name == nullptr) return nullptr;
    const std::string extension = osa::utf8OrEmpty(type);
    const std::string file =
        osa::joined(osa::utf8OrEmpty(subDirectory),
                    osa::utf8Of(name) + (extension.empty() ? "" : "." + extension));
    std::vector<std::string> folders = osa::localizedFolders(bundle);
    folders.insert(folders.begin(), bundle->layout.resources);
    for (const std::string& folder : folders) {
        // A name that leads out of the bundle's resources is none of its own.
        const std::string path = folder + "/" + file;
        if (file.find("../") != std::string::npos) continue;
        if (const auto found = osa::posix::status(path, osa::posix::Follow::yes); found.ok()) {
            return osa::makeFileURL(path, found->isFolder()).leak();
        }
    }
    return nullptr;
}

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key) {
    if (bundle == nullptr || key == nullptr) return nullptr;
    std::call_once(bundle->localizedRead, [bundle] {
        for (const std::string& folder : osa::localizedFolders(bundle)) {
            if (!osa::exists(folder + "/InfoPlist.strings")) continue;
            bundle->localizedInformation = osa::readDictionaryFile(folder + "/InfoPlist.strings");
            return;
        }
    });
    if (bundle->localizedInformation) {
        const CFTypeRef value = CFDictionaryGetValue(bundle->localizedInformation.get(), key);
        if (value != nullptr) return value;
    }
    return CFDictionaryGetValue(bundle->information(), key);
}

CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef table) {
    if (key == nullptr) return nullptr;
    if (bundle != nullptr) {
        auto entry =
            osa::localizedEntry(bundle, key, table == nullptr ? &osa::kDefaultTable : table);
        if (entry) return entry.leak();
    }
    return CFRef<CFStringRef>::Retain(value != nullptr ? value : key).leak();
}

CFBundleRefNum CFBundleOpenBundleResourceMap(CFBundleRef bundle) {
    constexpr CFBundleRefNum notOpened = -1;
    if (bundle == nullptr) return notOpened;
    const std::string name = bundle->informationText(kCFBundleExecutableKey);
    if (name.empty() || name.find('/') != std::string::npos) return notOpened;
    const std::string path = bundle->layout.resources + "/" + name + ".rsrc";
    FSRef ref;
    if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr) != 0) {
        return notOpened;
    }
    ResFileRefNum refNum = notOpened;
    if (FSOpenResourceFile(&ref, 0, nullptr, fsRdPerm, &refNum) == 0) return refNum;
    return FSOpenResFile(&ref, fsRdPerm);
}

void CFBundleCloseBundleResourceMap(CFBundleRef /*bundle*/, CFBundleRefNum refNum) {
    CloseResFile(refNum);
}
