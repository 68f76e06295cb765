// The ways to name a file, each by way of a file reference, so that only what exists is coerced.
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/Aliases.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacMemory.h>

#include "platform/base/FourCC.h"
#include "platform/events/coercions/BuiltInCoercions.h"
#include "platform/events/coercions/CoercionData.h"

namespace osa {
namespace {

constexpr OSType kNoCreator = FourCC("????");

OSErr referenceFromReference(const AEDesc* from, FSRef& ref) {
    if (!readValue(from, ref)) return errAECoercionFail;
    return FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr);
}

OSErr referenceFromSpec(const AEDesc* from, FSRef& ref) {
    FSSpec spec;
    if (!readValue(from, spec) || spec.name[0] >= sizeof spec.name) return errAECoercionFail;
    return FSpMakeFSRef(&spec, &ref);
}

OSErr referenceFromURL(const AEDesc* from, FSRef& ref) {
    const ByteSpan bytes = dataOf(*from);
    const auto url = CFRef<CFURLRef>::Adopt(
        CFURLCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                             static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8, nullptr));
    if (!url) return errAECoercionFail;
    return CFURLGetFSRef(url.get(), &ref) != 0 ? noErr : fnfErr;
}

OSErr referenceFromAlias(const AEDesc* from, FSRef& ref) {
    const auto alias = reinterpret_cast<AliasHandle>(from->dataHandle);
    // The record is the descriptor's and stays as it is.
    SInt16 count = 1;
    const auto status = static_cast<OSErr>(FSMatchAliasNoUI(
        nullptr, kARMNoUI | kARMSearch, alias, &count, &ref, nullptr, nullptr, nullptr));
    // So it answers to what is no alias record.
    return status == paramErr ? OSErr{errAECoercionFail} : status;
}

OSErr referenceToReference(const FSRef& ref, AEDesc* result) {
    return makeDescOf(typeFSRef, ref, result);
}

OSErr referenceToSpec(const FSRef& ref, AEDesc* result) {
    FSSpec spec{};
    const OSErr status = FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr);
    return status != noErr ? status : makeDescOf(typeFSS, spec, result);
}

OSErr referenceToURL(const FSRef& ref, AEDesc* result) {
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    if (!url) return fnfErr;
    const auto bytes = CFRef<CFDataRef>::Adopt(
        CFURLCreateData(kCFAllocatorDefault, url.get(), kCFStringEncodingUTF8, true));
    if (!bytes) return memFullErr;
    return AECreateDesc(typeFileURL, CFDataGetBytePtr(bytes.get()),
                        static_cast<Size>(CFDataGetLength(bytes.get())), result);
}

OSErr referenceToAlias(const FSRef& ref, AEDesc* result) {
    AliasHandle alias = nullptr;
    if (const OSErr status = FSNewAliasMinimal(&ref, &alias); status != noErr) return status;
    // A descriptor's handle is one as any other: this one becomes it.
    *result = {typeAlias, reinterpret_cast<Handle>(alias)};
    return noErr;
}

struct FileForm {
    DescType type;
    OSErr (*read)(const AEDesc* from, FSRef& ref);
    OSErr (*write)(const FSRef& ref, AEDesc* result);
};

constexpr FileForm kFileForms[] = {
    {typeFSRef, referenceFromReference, referenceToReference},
    {typeFSS, referenceFromSpec, referenceToSpec},
    {typeFileURL, referenceFromURL, referenceToURL},
    {typeAlias, referenceFromAlias, referenceToAlias},
};

/// The table of coercions sends only types that are here.
const FileForm& formOf(DescType type) {
    const FileForm* form = kFileForms;
    while (form->type != type) ++form;
    return *form;
}

}  // namespace

OSErr fileToFile(const AEDesc* from, DescType toType, AEDesc* result) {
    FSRef ref;
    const OSErr status = formOf(from->descriptorType).read(from, ref);
    return status != noErr ? status : formOf(toType).write(ref, result);
}

OSErr fileToText(const AEDesc* from, DescType toType, AEDesc* result) {
    FSRef ref;
    const OSErr status = formOf(from->descriptorType).read(from, ref);
    if (status != noErr) return status;
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    if (!url) return fnfErr;
    const auto path =
        CFRef<CFStringRef>::Adopt(CFURLCopyFileSystemPath(url.get(), kCFURLHFSPathStyle));
    if (!path) return errAECoercionFail;
    std::u16string units(static_cast<std::size_t>(CFStringGetLength(path.get())), u'\0');
    CFStringGetCharacters(path.get(), CFRangeMake(0, CFStringGetLength(path.get())),
                          reinterpret_cast<UniChar*>(units.data()));
    const bool isFolder = CFURLHasDirectoryPath(url.get()) != 0;
    if (isFolder && !units.ends_with(u':')) units.push_back(u':');
    return writeText(units, toType, result);
}

OSErr fileToSignature(const AEDesc* from, DescType toType, AEDesc* result) {
    FSRef ref;
    OSStatus status = formOf(from->descriptorType).read(from, ref);
    if (status != noErr) return static_cast<OSErr>(status);
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    LSItemInfoRecord info;
    status = url ? LSCopyItemInfoForURL(url.get(), kLSRequestAllInfo, &info) : OSStatus{fnfErr};
    if (status != noErr) return static_cast<OSErr>(status);
    const auto extension = CFRef<CFStringRef>::Adopt(info.extension);
    if (info.creator == 0 || info.creator == kNoCreator) return errAECoercionFail;
    return makeDescOf(toType, info.creator, result);
}

}  // namespace osa
