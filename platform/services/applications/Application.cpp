// What lies at a path: a bundle, a desktop entry or a program.
#include "platform/services/applications/Application.h"

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/Finder.h>
#include <CoreServices/MacErrors.h>

#include "platform/cf/StringObject.h"
#include "platform/files/References.h"
#include "platform/posix/FileSystem.h"
#include "platform/services/applications/ApplicationFolders.h"
#include "platform/services/applications/ApplicationKinds.h"
#include "platform/text/MacRoman.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr std::uint32_t kExecuteBits = 0111;
constexpr std::string_view kBundleExtension = ".app";

std::string informationText(CFBundleRef bundle, CFStringRef key) {
    const CFTypeRef value = CFBundleGetValueForInfoDictionaryKey(bundle, key);
    if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID()) return {};
    return utf8Of(static_cast<CFStringRef>(value));
}

bool isTrue(CFBundleRef bundle, CFStringRef key) {
    const CFTypeRef value = CFBundleGetValueForInfoDictionaryKey(bundle, key);
    if (value == nullptr) return false;
    if (CFGetTypeID(value) == CFBooleanGetTypeID())
        return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0;
    double number = 0;
    if (CFGetTypeID(value) == CFNumberGetTypeID())
        CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberDoubleType, &number);
    if (number != 0) return true;
    // The old text form of dictionaries has strings only.
    return isString(value, "1") || isString(value, "YES") || isString(value, "true");
}

/// The four characters of a signature; unknown when they are not four or not Mac Roman.
OSType signatureOf(const DesktopEntry& entry) {
    std::u16string units;
    if (!utf16FromUTF8(entry.text("X-OSA-Signature"), units) || units.size() != 4)
        return kUnknownSignature;
    OSType signature = 0;
    for (const char16_t unit : units) {
        const int byte = macRomanFromUnicode(unit);
        if (byte < 0) return kUnknownSignature;
        signature = signature << 8 | static_cast<unsigned>(byte);
    }
    return signature;
}

Application programAt(const std::string& path) {
    Application application{Application::Kind::program, path, {}, leafOf(path)};
    const auto reference = referenceToPath(path, nullptr);
    FSCatalogInfo catalog;
    if (!reference.ok() || FSGetCatalogInfo(&*reference, kFSCatInfoFinderInfo, &catalog, nullptr,
                                            nullptr, nullptr) != noErr)
        return application;
    FinderInfo finder;
    __builtin_memcpy(&finder, &catalog.finderInfo, sizeof finder);
    if (finder.fdType != 0) application.type = finder.fdType;
    if (finder.fdCreator != 0) application.signature = finder.fdCreator;
    return application;
}

}  // namespace

CFRef<CFBundleRef> bundleAt(const std::string& path) {
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
        static_cast<CFIndex>(path.size()), true));
    if (!url) return {};
    return CFRef<CFBundleRef>::Adopt(CFBundleCreate(kCFAllocatorDefault, url.get()));
}

Application describeBundle(CFBundleRef bundle, const std::string& path) {
    UInt32 type = 0;
    UInt32 signature = 0;
    CFBundleGetPackageInfo(bundle, &type, &signature);
    Application application{Application::Kind::bundle, path, {}, {}, type, signature};
    if (const CFStringRef identifier = CFBundleGetIdentifier(bundle))
        application.identifier = utf8Of(identifier);
    application.name = informationText(bundle, CFSTR("CFBundleDisplayName"));
    if (application.name.empty()) application.name = informationText(bundle, kCFBundleNameKey);
    if (application.name.empty()) {
        application.name = leafOf(path);
        if (application.name.ends_with(kBundleExtension))
            application.name.resize(application.name.size() - kBundleExtension.size());
    }
    application.isBackgroundOnly = isTrue(bundle, CFSTR("LSBackgroundOnly"));
    return application;
}

std::optional<Application> applicationOfBundle(CFBundleRef bundle, const std::string& path) {
    Application application = describeBundle(bundle, path);
    if (application.type != kApplicationType) return std::nullopt;
    return application;
}

std::optional<Application> applicationOfEntry(const DesktopEntry& entry, const std::string& path,
                                              std::string identifier) {
    if (entry.text("Type") != "Application") return std::nullopt;
    Application application{Application::Kind::desktopEntry, path, std::move(identifier),
                            entry.localText("Name", desktopLanguages())};
    if (application.name.empty()) application.name = application.identifier;
    application.signature = signatureOf(entry);
    return application;
}

Result<Application> applicationAt(const std::string& given) {
    std::string path = given;
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    OSA_TRY(const posix::FileStatus status, posix::status(path, posix::Follow::yes));
    if (status.isFolder()) {
        const CFRef<CFBundleRef> bundle = bundleAt(path);
        auto application = bundle ? applicationOfBundle(bundle.get(), path) : std::nullopt;
        if (!application) return Failure(kLSNotAnApplicationErr);
        return std::move(*application);
    }
    if (path.ends_with(kEntryExtension)) {
        const auto entry = DesktopEntry::read(path);
        auto application =
            entry ? applicationOfEntry(*entry, path, desktopEntryID(path)) : std::nullopt;
        if (!application) return Failure(kLSNotAnApplicationErr);
        return std::move(*application);
    }
    if (!status.isRegular() || (status.mode & kExecuteBits) == 0)
        return Failure(kLSNotAnApplicationErr);
    return programAt(path);
}

}  // namespace osa
