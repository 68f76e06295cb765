// Making files and bundles for compiled scripts.
#include "cli/scripts/CompileOutput.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>

#include <filesystem>
#include <fstream>
#include <ranges>
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

bool CompileOutput::isBundleName(const std::string& path) {
    return fs::path(withoutSlashes(path)).extension() == ".scptd";
}

CompileOutput::CompileOutput(const std::string& path)
    : bundle_(isBundleName(path) ? withoutSlashes(path) : std::string()),
      file_(bundle_.empty() ? path : mainScriptOf(bundle_)) {}

CompileOutput::~CompileOutput() {
    std::error_code ignored;
    for (const std::string& path : std::views::reverse(made_)) fs::remove(path, ignored);
}

bool CompileOutput::makeFolder(const std::string& path) {
    std::error_code failed;
    if (fs::create_directory(path, failed)) made_.push_back(path);
    return !failed;
}

bool CompileOutput::makeFile(const std::string& path, const std::string& content) {
    std::error_code failed;
    if (fs::exists(path, failed)) return true;
    std::ofstream file(path, std::ios::app);
    if (!file) return false;
    made_.push_back(path);
    return (file << content).flush().good();
}

bool CompileOutput::makeBundle() {
    for (const char* const folder :
         {"", "/Contents", "/Contents/Resources", "/Contents/Resources/Scripts"}) {
        if (!makeFolder(bundle_ + folder)) return false;
    }
    const std::string information = bundleInformation(fs::path(bundle_).stem());
    return !information.empty() && makeFile(bundle_ + "/Contents/Info.plist", information);
}

std::string CompileOutput::open() {
    if ((!bundle_.empty() && !makeBundle()) || !makeFile(file_, "")) return "cannot be made";
    const OSStatus status =
        FSPathMakeRef(reinterpret_cast<const UInt8*>(file_.c_str()), &ref_, nullptr);
    return status == noErr ? std::string() : readingReason(status);
}

}  // namespace osa::cli
