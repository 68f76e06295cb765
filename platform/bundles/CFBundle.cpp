// CFBundle: creation, the information dictionary and the package information.
#include "platform/bundles/Bundle.h"

#include <CoreFoundation/CFPropertyList.h>

#include "platform/base/ByteReader.h"
#include "platform/base/FourCC.h"
#include "platform/cf/StringObject.h"
#include "platform/cf/url/URLObject.h"
#include "platform/posix/FileSystem.h"

OSA_CONSTANT_STRING(kCFBundleIdentifierKey, "CFBundleIdentifier");
OSA_CONSTANT_STRING(kCFBundleExecutableKey, "CFBundleExecutable");
OSA_CONSTANT_STRING(kCFBundleNameKey, "CFBundleName");
OSA_CONSTANT_STRING(kCFBundleDevelopmentRegionKey, "CFBundleDevelopmentRegion");

namespace osa {
namespace {

constexpr std::uint64_t kMaxInformationBytes = 16 << 20;
constexpr FourCharCode kUnknownCode = FourCC("????");
constexpr std::size_t kPackageInfoBytes = 8;

constinit const __CFString kPackageTypeKey{"CFBundlePackageType"};
constinit const __CFString kSignatureKey{"CFBundleSignature"};

CFRef<CFDictionaryRef> emptyDictionary() {
    return CFRef<CFDictionaryRef>::Adopt(CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr,
                                                            0, &kCFTypeDictionaryKeyCallBacks,
                                                            &kCFTypeDictionaryValueCallBacks));
}

void finalizeBundle(CFObject* object) {
    auto* const bundle = static_cast<__CFBundle*>(object);
    // The program stays loaded: the function that gave up the last instance is still running in it.
    unregisterFactories(bundle);
    deleteObject<__CFBundle>(object);
}

std::string describeBundle(const CFObject* object) {
    return "<CFBundle " + static_cast<const __CFBundle*>(object)->layout.root + ">";
}

/// The codes of a PkgInfo file of at least eight bytes.
bool readPackageInfo(const BundleLayout& layout, UInt32& type, UInt32& creator) {
    std::vector<std::string> folders = layout.supportFolders;
    folders.push_back(layout.root);
    for (const std::string& folder : folders) {
        const auto bytes = posix::readFile(folder + "/PkgInfo", kMaxInformationBytes);
        if (!bytes.ok() || bytes->size() < kPackageInfoBytes) continue;
        ByteReader reader(*bytes);
        type = reader.fourCC();
        creator = reader.fourCC();
        return true;
    }
    return false;
}

/// The code that a string of exactly four characters stands for, else `fallback`.
FourCharCode codeOf(CFBundleRef bundle, CFStringRef key, FourCharCode fallback) {
    const CFTypeRef value = CFDictionaryGetValue(bundle->information(), key);
    if (cfCast<__CFString>(value) == nullptr) return fallback;
    unsigned char text[6];
    if (!CFStringGetPascalString(static_cast<CFStringRef>(value), text, sizeof text,
                                 kCFStringEncodingMacRoman) ||
        text[0] != 4) {
        return fallback;
    }
    return ByteReader(text + 1, 4).fourCC();
}

FourCharCode packageTypeByName(const std::string& path) {
    const std::string extension = nameExtension(path);
    if (extension == "app") return FourCC("APPL");
    if (extension == "framework") return FourCC("FMWK");
    return FourCC("BNDL");
}

}  // namespace

CFRef<CFDictionaryRef> readDictionaryFile(const std::string& path) {
    const auto bytes = posix::readFile(path, kMaxInformationBytes);
    if (!bytes.ok()) return {};
    const auto data = CFRef<CFDataRef>::Adopt(
        CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes->data()),
                     static_cast<CFIndex>(bytes->size())));
    if (!data) return {};
    const CFTypeRef list = CFPropertyListCreateWithData(kCFAllocatorDefault, data.get(),
                                                        kCFPropertyListImmutable, nullptr, nullptr);
    if (list == nullptr) return {};
    if (CFGetTypeID(list) == CFDictionaryGetTypeID()) {
        return CFRef<CFDictionaryRef>::Adopt(static_cast<CFDictionaryRef>(list));
    }
    CFRelease(list);
    return {};
}

CFRef<CFURLRef> makeFileURL(const std::string& path, bool isDirectory) {
    return CFRef<CFURLRef>::Adopt(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
        static_cast<CFIndex>(path.size()), isDirectory));
}

}  // namespace osa

const osa::ClassRecord __CFBundle::kClass = {"CFBundle", osa::finalizeBundle, nullptr, nullptr,
                                             osa::describeBundle};

CFDictionaryRef __CFBundle::information() {
    std::call_once(informationRead, [this] {
        for (const std::string& folder : layout.supportFolders) {
            informationDictionary = osa::readDictionaryFile(folder + "/Info.plist");
            if (informationDictionary) return;
        }
        informationDictionary = osa::emptyDictionary();
    });
    return informationDictionary.get();
}

std::string __CFBundle::informationText(CFStringRef key) {
    const CFTypeRef value = CFDictionaryGetValue(information(), key);
    if (osa::cfCast<__CFString>(value) == nullptr) return {};
    return osa::utf8Of(static_cast<CFStringRef>(value));
}

CFTypeID CFBundleGetTypeID(void) {
    return osa::typeIDOf(__CFBundle::kClass);
}

CFBundleRef CFBundleCreate(CFAllocatorRef /*allocator*/, CFURLRef url) try {
    std::string path;
    if (url == nullptr || !osa::filePathOf(url, true, path)) return nullptr;
    auto layout = osa::findBundleLayout(path);
    return layout ? osa::makeObject<__CFBundle>(std::move(*layout)) : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle) {
    return bundle == nullptr ? nullptr : osa::makeFileURL(bundle->layout.root, true).leak();
}

void CFBundleGetPackageInfo(CFBundleRef bundle, UInt32* packageType, UInt32* packageCreator) {
    UInt32 type = 0;
    UInt32 creator = 0;
    if (bundle != nullptr && !osa::readPackageInfo(bundle->layout, type, creator)) {
        type =
            osa::codeOf(bundle, &osa::kPackageTypeKey, osa::packageTypeByName(bundle->layout.root));
        creator = osa::codeOf(bundle, &osa::kSignatureKey, osa::kUnknownCode);
    }
    if (packageType != nullptr) *packageType = type;
    if (packageCreator != nullptr) *packageCreator = creator;
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle) {
    return bundle == nullptr ? nullptr : bundle->information();
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle) {
    if (bundle == nullptr) return nullptr;
    const CFTypeRef value = CFDictionaryGetValue(bundle->information(), kCFBundleIdentifierKey);
    return osa::cfCast<__CFString>(value) == nullptr ? nullptr : static_cast<CFStringRef>(value);
}
