// Bundles made of arbitrary files: the bytes are a list of (place, content), written below a folder
// that is then opened as a bundle and asked everything.
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFPlugIn.h>
#include <CoreFoundation/CFRef.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/base/ByteReader.h"

namespace {

namespace fs = std::filesystem;

constexpr std::array kPlaces = {
    "Contents/Info.plist",
    "Contents/PkgInfo",
    "Contents/Resources/description.rtfd/TXT.rtf",
    "Contents/Resources/en.lproj/InfoPlist.strings",
    "Contents/Resources/Localizable.strings",
    "Contents/Resources/Tool.rsrc",
    "Contents/Resources",
    "Info.plist",
    "PkgInfo",
    "Resources/Info.plist",
    "Support Files/Info.plist",
};

const fs::path& workFolder() {
    static const fs::path folder = [] {
        std::string pattern = (fs::temp_directory_path() / "osa-fuzz-XXXXXX").string();
        return fs::path(mkdtemp(pattern.data()));
    }();
    return folder;
}

void writeFiles(const fs::path& bundle, osa::ByteReader reader) {
    while (reader.ok() && !reader.atEnd()) {
        const fs::path file = bundle / kPlaces[reader.u8() % kPlaces.size()];
        const std::string_view content =
            reader.text(std::min<std::size_t>(reader.u16(), reader.remaining()));
        std::error_code ignored;
        fs::create_directories(file.parent_path(), ignored);
        std::ofstream(file, std::ios::binary) << content;
    }
}

void askEverything(CFBundleRef bundle) {
    UInt32 type = 0;
    UInt32 creator = 0;
    CFBundleGetPackageInfo(bundle, &type, &creator);
    CFBundleGetIdentifier(bundle);
    CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleNameKey);
    using URL = CFRef<CFURLRef>;
    URL::Adopt(CFBundleCopyResourcesDirectoryURL(bundle));
    URL::Adopt(CFBundleCopyExecutableURL(bundle));
    URL::Adopt(CFBundleCopyResourceURL(bundle, CFSTR("description"), CFSTR("rtfd"), nullptr));
    CFRef<CFStringRef>::Adopt(CFBundleCopyLocalizedString(bundle, CFSTR("key"), nullptr, nullptr));
    const CFBundleRefNum map = CFBundleOpenBundleResourceMap(bundle);
    if (map >= 0) CFBundleCloseBundleResourceMap(bundle, map);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fs::path bundle = workFolder() / "b";
    fs::create_directory(bundle);
    writeFiles(bundle, osa::ByteReader(data, size));
    const std::string path = bundle.string();
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
        static_cast<CFIndex>(path.size()), true));
    const auto opened = CFRef<CFBundleRef>::Adopt(CFBundleCreate(kCFAllocatorDefault, url.get()));
    if (opened) askEverything(opened.get());
    CFRef<CFPlugInRef>::Adopt(CFPlugInCreate(kCFAllocatorDefault, url.get()));
    fs::remove_all(bundle);
    return 0;
}
