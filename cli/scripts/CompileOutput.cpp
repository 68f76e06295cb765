// Making files and bundles for compiled scripts.
#include "cli/scripts/CompileOutput.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>
#include <strings.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "cli/Command.h"
#include "cli/RecordFormat.h"
#include "cli/scripts/ScriptSession.h"

namespace osa::cli {
namespace {

namespace fs = std::filesystem;

/// Without the slashes that a shell's completion leaves behind a folder's name.
std::string withoutSlashes(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    return path;
}

/// What the File Manager puts there for a file that it can give no attributes.
fs::path sideFileOf(const fs::path& file) {
    return file.parent_path() / ("._" + file.filename().string());
}

std::string cannotBeMade(int error) {
    return "cannot be made: " + std::generic_category().message(error);
}

/// The property list of a script bundle; empty when there is none for this name.
std::string bundleInformation(const std::string& name) {
    const auto list = CFRef<CFMutableDictionaryRef>::Adopt(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const std::pair<CFStringRef, std::string> entries[] = {
        {CFSTR("CFBundleName"), toValidUTF8(name)},
        {CFSTR("CFBundleShortVersionString"), "1.0"},
        {CFSTR("CFBundleInfoDictionaryVersion"), "6.0"},
        {CFSTR("CFBundlePackageType"), "osas"},
        {CFSTR("CFBundleSignature"), "????"},
    };
    for (const auto& [key, value] : entries) {
        const auto text = CFRef<CFStringRef>::Adopt(
            CFStringCreateWithCString(kCFAllocatorDefault, value.c_str(), kCFStringEncodingUTF8));
        if (!list || !text) return {};
        CFDictionarySetValue(list.get(), key, text.get());
    }
    const auto data =
        CFRef<CFDataRef>::Adopt(CFPropertyListCreateXMLData(kCFAllocatorDefault, list.get()));
    if (!data) return {};
    return {reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
            static_cast<std::size_t>(CFDataGetLength(data.get()))};
}

}  // namespace

bool CompileOutput::isNamed(const std::string& path, const char* extension) {
    return strcasecmp(fs::path(withoutSlashes(path)).extension().c_str(), extension) == 0;
}

CompileOutput::CompileOutput(const std::string& path)
    : bundle_(isBundleName(path) ? withoutSlashes(path) : std::string()),
      file_(bundle_.empty() ? path : mainScriptOf(bundle_)) {}

CompileOutput::~CompileOutput() {
    std::error_code ignored;
    for (auto path = made_.rbegin(); path != made_.rend(); ++path) fs::remove(*path, ignored);
}

std::string CompileOutput::makeFolder(const std::string& path) {
    std::error_code failed;
    if (fs::create_directory(path, failed)) made_.push_back(path);
    return failed ? cannotBeMade(failed.value()) : std::string();
}

std::string CompileOutput::makeFile(const std::string& path, const std::string& content) {
    std::error_code failed;
    if (fs::exists(path, failed)) return {};
    // Through a link that leads nowhere something would be made elsewhere.
    if (fs::is_symlink(path, failed)) return "is a link that leads nowhere";
    std::ofstream file(path, std::ios::app);
    if (!file) return cannotBeMade(errno);
    made_.push_back(path);
    return (file << content).flush() ? std::string() : cannotBeMade(errno);
}

std::string CompileOutput::makeBundle() {
    for (const char* const folder :
         {"", "/Contents", "/Contents/Resources", "/Contents/Resources/Scripts"}) {
        if (std::string reason = makeFolder(bundle_ + folder); !reason.empty()) return reason;
    }
    const std::string information = bundleInformation(fs::path(bundle_).stem());
    if (information.empty()) return cannotBeMade(ENOMEM);
    return makeFile(bundle_ + "/Contents/Info.plist", information);
}

std::string CompileOutput::open() {
    const fs::path beside = sideFileOf(file_);
    std::error_code ignored;
    const bool wasBeside = fs::exists(fs::symlink_status(beside, ignored));
    std::string reason = bundle_.empty() ? std::string() : makeBundle();
    if (reason.empty()) reason = makeFile(file_, "");
    if (!reason.empty()) return reason;
    const bool isNew = !made_.empty() && made_.back() == file_;
    if (isNew && !wasBeside) made_.push_back(beside);
    const OSStatus status =
        FSPathMakeRef(reinterpret_cast<const UInt8*>(file_.c_str()), &ref_, nullptr);
    return status == noErr ? std::string() : readingReason(status);
}

}  // namespace osa::cli
