// Loading the plug-in through the plug-in model, and calling it through its interface table.
#include "service/ImporterHost.h"

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/MacErrors.h>

#include <cstdlib>
#include <filesystem>

#include "importer/ScriptType.h"
#include "service/StderrCapture.h"

namespace osa::service {
namespace {

constexpr char kBundleName[] = "OSAImporter.mdimporter";

CFRef<CFStringRef> makeString(const std::string& utf8) {
    return CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

CFRef<CFURLRef> makeURL(CFStringRef path) {
    return CFRef<CFURLRef>::Adopt(
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, path, kCFURLPOSIXPathStyle, false));
}

/// Asks each of the plug-in's factories for the importer interface; null when none gives it.
MDImporterInterfaceStruct** createImporter(CFPlugInRef plugIn) {
    const auto factories = CFRef<CFArrayRef>::Adopt(
        CFPlugInFindFactoriesForPlugInTypeInPlugIn(kMDImporterTypeID, plugIn));
    const CFIndex count = factories ? CFArrayGetCount(factories.get()) : 0;
    for (CFIndex i = 0; i < count; ++i) {
        const auto factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories.get(), i));
        auto** const unknown = static_cast<IUnknownVTbl**>(
            CFPlugInInstanceCreate(kCFAllocatorDefault, factory, kMDImporterTypeID));
        if (unknown == nullptr) continue;
        void* importer = nullptr;
        (*unknown)->QueryInterface(unknown, CFUUIDGetUUIDBytes(kMDImporterInterfaceID), &importer);
        (*unknown)->Release(unknown);
        if (importer != nullptr) return static_cast<MDImporterInterfaceStruct**>(importer);
    }
    return nullptr;
}

std::string reasonFor(OSStatus status, const std::string& path) {
    std::error_code ignored;
    if (status == fnfErr && std::filesystem::is_directory(path, ignored)) {
        return "is a folder, but no bundle";
    }
    if (status == fnfErr) return "no such file";
    return "cannot be read (status " + std::to_string(status) + ")";
}

/// Tells the kind, or else why it cannot be told.
void classify(CFURLRef url, ImportRecord& record) {
    try {
        record.kind = GetScriptType(CFileSpec(url));
    } catch (OSStatus status) {
        record.error = reasonFor(status, record.path);
    }
}

}  // namespace

const char* kindName(std::uint32_t kind) {
    static constexpr const char* names[] = {
        "kScriptTypeText",          "kScriptTypeDataForkScript", "kScriptTypeResourceScript",
        "kScriptTypeBundleScript",  "kScriptTypeCarbonApplet",   "kScriptTypeBundleApplet",
        "kScriptTypeClassicApplet", "kScriptTypeExcluded",       "kScriptTypeUnknown"};
    return kind >= 1 && kind <= std::size(names) ? names[kind - 1] : "";
}

std::unique_ptr<ImporterHost> ImporterHost::load(const std::string& bundlePath,
                                                 std::string& reason) {
    const auto path = makeString(bundlePath);
    const auto url = path ? makeURL(path.get()) : CFRef<CFURLRef>();
    auto plugIn =
        CFRef<CFPlugInRef>::Adopt(url ? CFPlugInCreate(kCFAllocatorDefault, url.get()) : nullptr);
    if (!plugIn) {
        reason = "is no plug-in bundle";
        return nullptr;
    }
    MDImporterInterfaceStruct** const importer = createImporter(plugIn.get());
    if (importer == nullptr) {
        reason = "gives no metadata importer";
        return nullptr;
    }
    return std::unique_ptr<ImporterHost>(new ImporterHost(std::move(plugIn), importer));
}

ImporterHost::~ImporterHost() {
    (*importer_)->Release(importer_);
}

CFRef<CFMutableDictionaryRef> ImporterHost::makeAttributes() {
    return CFRef<CFMutableDictionaryRef>::Adopt(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

bool ImporterHost::callImporter(const std::string& path, CFMutableDictionaryRef attributes) const {
    const auto pathString = makeString(path);
    return pathString &&
           (*importer_)->ImporterImportData(importer_, attributes, nullptr, pathString.get()) != 0;
}

ImportRecord ImporterHost::import(const std::string& path) {
    ImportRecord record;
    record.path = path;
    const CFRef<CFMutableDictionaryRef> attributes = makeAttributes();
    record.attributes = CFRef<CFDictionaryRef>::Retain(attributes.get());
    const auto pathString = makeString(path);
    if (!pathString) {
        record.error = "the path is not UTF-8";
        return record;
    }
    classify(makeURL(pathString.get()).get(), record);
    if (!record.error.empty()) return record;
    StderrCapture capture;
    record.imported = callImporter(path, attributes.get());
    record.log = capture.finish();
    return record;
}

std::string findImporterBundle() {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    std::vector<fs::path> places;
    if (!error) places.push_back(program.parent_path().parent_path() / "lib" / "osa");
    if (const char* const data = std::getenv("XDG_DATA_HOME"); data != nullptr && *data != '\0') {
        places.push_back(fs::path(data) / "osa" / "importers");
    } else if (const char* const home = std::getenv("HOME"); home != nullptr) {
        places.push_back(fs::path(home) / ".local/share/osa/importers");
    }
    for (const fs::path& place : places) {
        if (fs::exists(place / kBundleName, error)) return place / kBundleName;
    }
    return {};
}

}  // namespace osa::service
