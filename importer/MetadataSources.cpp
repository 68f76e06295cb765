// Reading the places where scripts keep metadata.
#include "importer/MetadataSources.h"

#include <CoreFoundation/CFBundle.h>
#include <Foundation/Foundation.h>
#include <Metadata/MDImporter.h>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"
#include "importer/ScriptFile.h"

namespace {

constexpr SInt16 kDescriptionID = 1128;
constexpr SInt16 kSourceTextID = 2000;
constexpr SInt16 kArchiveID = 128;

/// Sets `key` to the text of a 'TEXT' resource, which is Mac Roman whatever the system's encoding.
void SetText(CFMutableDictionaryRef attributes, CFStringRef key, Handle text) {
    const SCoreFoundation<CFStringRef> string(
        ToCFString(*text, static_cast<UInt32>(GetHandleSize(text)), kCFStringEncodingMacRoman));
    CFDictionarySetValue(attributes, key, string);
}

/// Merges the dictionary under "meta-data" of an archive or list file; null has none.
void MergeSavedAttributes(CFMutableDictionaryRef attributes, CFTypeRef saved) {
    if (saved == nullptr) return;
    const CFTypeRef metadata = NSDictionary::objectForKey(saved, CFSTR("meta-data"));
    if (metadata != nullptr) NSDictionary::addEntriesFromDictionary(attributes, metadata);
}

void MergeArchive(CFMutableDictionaryRef attributes, Handle archive) {
    const CFDataRef data = NSData::dataWithBytes(*archive, GetHandleSize(archive));
    MergeSavedAttributes(attributes, NSUnarchiver::unarchiveObjectWithData(data));
}

SCoreFoundation<CFURLRef> RelativeURL(CFStringRef path, CFURLRef base) {
    return SCoreFoundation<CFURLRef>(CFURLCreateWithFileSystemPathRelativeToBase(
        kCFAllocatorDefault, path, kCFURLPOSIXPathStyle, false, base));
}

void MergeListFile(CFMutableDictionaryRef attributes, CFURLRef list) {
    MergeSavedAttributes(attributes, NSDictionary::dictionaryWithContentsOfURL(list));
}

SCoreFoundation<CFURLRef> ListURL(CFURLRef itemURL) {
    SCoreFoundation<CFURLRef> list = RelativeURL(CFSTR("Contents/Brindle.list"), itemURL);
    FailNIL(list);
    return list;
}

/// The rich-text description with its attachments, or alone; null when there is none.
SCoreFoundation<CFURLRef> DescriptionURL(CFBundleRef bundle) {
    SCoreFoundation<CFURLRef> url(
        CFBundleCopyResourceURL(bundle, CFSTR("description"), CFSTR("rtfd"), nullptr));
    if (url == nullptr) {
        url = CFBundleCopyResourceURL(bundle, CFSTR("description"), CFSTR("rtf"), nullptr);
    }
    return url;
}

/// A document that cannot be read has no text to set.
void SetIfRead(CFMutableDictionaryRef attributes, CFStringRef key, CFStringRef text) {
    if (text != nullptr) CFDictionarySetValue(attributes, key, text);
}

}  // namespace

void ImportResourceScript(const CFileSpec& spec, CFMutableDictionaryRef attributes) {
    CScriptResFile file(spec);
    file.Open(fsRdPerm);
    // One handle is held at a time: each replaces the one before, also when it is missing.
    SHandle held(file.RetrieveResource('TEXT', kDescriptionID, nullptr, nullptr));
    if (held.Get() != nullptr) SetText(attributes, kMDItemDescription, held.Get());
    held.Set(file.RetrieveResource('TEXT', kSourceTextID, nullptr, nullptr));
    if (held.Get() != nullptr) SetText(attributes, kMDItemTextContent, held.Get());
    held.Set(file.RetrieveResource('CWst', kArchiveID, nullptr, nullptr));
    if (held.Get() != nullptr) MergeArchive(attributes, held.Get());
}

void ImportBundleScript(CFURLRef itemURL, CFMutableDictionaryRef attributes) {
    // Held side by side, so that they are released in the reverse of this order.
    const SCoreFoundation<CFBundleRef> bundle(CFBundleCreate(kCFAllocatorDefault, itemURL));
    FailNIL(bundle);
    const SCoreFoundation<CFURLRef> description = DescriptionURL(bundle);
    if (description != nullptr) {
        SetIfRead(attributes, kMDItemDescription,
                  NSAttributedString::initWithURL(description, nullptr).string());
    }
    const SCoreFoundation<CFURLRef> resources(CFBundleCopyResourcesDirectoryURL(bundle));
    FailNIL(resources);
    const SCoreFoundation<CFURLRef> recovered =
        RelativeURL(CFSTR("Scripts/main.recover.txt"), resources);
    if (recovered != nullptr) {
        SetIfRead(attributes, kMDItemTextContent, NSString::stringWithContentsOfURL(recovered));
    }
    const SCoreFoundation<CFURLRef> list = ListURL(itemURL);
    MergeListFile(attributes, list);
}

void ImportTextScript(const CFileSpec& spec, CFURLRef itemURL, CFMutableDictionaryRef attributes) {
    CScriptResFile file(spec);
    file.Open(fsRdPerm);
    const SHandle text(file.RetrieveResource('TEXT', kDescriptionID, nullptr, nullptr));
    if (text.Get() != nullptr) SetText(attributes, kMDItemDescription, text.Get());
    const SCoreFoundation<CFURLRef> list = ListURL(itemURL);
    MergeListFile(attributes, list);
}
