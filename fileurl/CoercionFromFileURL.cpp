// The coercion handler from 'furl' to older descriptors of files, and both handlers' installation.
#include <CoreServices/AEObjects.h>
#include <CoreServices/Aliases.h>
#include <CoreServices/MacMemory.h>

#include <string_view>

#include "fileurl/FileURL.h"
#include "fileurl/FileURLSupport.h"

namespace {

using namespace furl;

OSStatus ToText(CFURLRef url, DescType toType, AEDesc* result) {
    const std::u16string units = Units(CFURLGetString(url));
    return AECoercePtr(typeUnicodeText, units.data(),
                       static_cast<Size>(units.size() * sizeof(UniChar)), toType, result);
}

OSStatus ToObject(std::string_view bytes, AEDesc* result) {
    AEDesc key{typeNull, nullptr};
    const OSStatus status =
        AECreateDesc(typeChar, bytes.data(), static_cast<Size>(bytes.size()), &key);
    if (status != noErr) return status;
    AEDesc container{typeNull, nullptr};
    return CreateObjSpecifier(typeFileURL, &container, formName, &key, true, result);
}

OSStatus SpecDesc(const FSSpec& spec, AEDesc* result) {
    return AECreateDesc(typeFSS, &spec, sizeof spec, result);
}

/// Takes the handle.
OSStatus AliasDesc(AliasHandle alias, AEDesc* result) {
    const auto handle = reinterpret_cast<Handle>(alias);
    const OSStatus status = AECreateDesc(typeAlias, *handle, GetHandleSize(handle), result);
    DisposeHandle(handle);
    return status;
}

OSStatus ExistingTo(const FSRef& ref, DescType toType, AEDesc* result) {
    if (toType == typeFSRef) return AECreateDesc(typeFSRef, &ref, sizeof ref, result);
    if (toType == typeAlias) {
        AliasHandle alias = nullptr;
        const OSStatus status = FSNewAliasMinimal(&ref, &alias);
        return status == noErr ? AliasDesc(alias, result) : status;
    }
    FSSpec spec{};
    const OSStatus status =
        FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr);
    return status == noErr ? SpecDesc(spec, result) : status;
}

/// Appends the text in the system encoding; false when it is no Pascal string in it.
bool AppendPascal(CFStringRef text, std::string& path) {
    Str255 pascal;
    if (!CFStringGetPascalString(text, pascal, sizeof pascal, CFStringGetSystemEncoding()))
        return false;
    path.append(reinterpret_cast<const char*>(pascal) + 1, pascal[0]);
    return true;
}

/// "Volume:folder:leaf" of what does not exist.
OSStatus MacPath(CFURLRef url, std::string& path) {
    const auto parent =
        CFRef<CFURLRef>::Adopt(CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url));
    const auto leaf = CFRef<CFStringRef>::Adopt(CFURLCopyLastPathComponent(url));
    const auto folder = CFRef<CFStringRef>::Adopt(
        parent ? CFURLCopyFileSystemPath(parent.get(), kCFURLHFSPathStyle) : nullptr);
    if (!folder || !leaf) return fnfErr;
    const auto name = StringOf(kCFAllocatorDefault, SwapSeparators(Units(leaf.get())));
    if (!name) return memFullErr;
    if (!AppendPascal(folder.get(), path)) return pathTooLongErr;
    path += ':';
    if (!AppendPascal(name.get(), path) || path.size() >= sizeof(Str255)) return pathTooLongErr;
    return noErr;
}

OSStatus MissingTo(CFURLRef url, DescType toType, AEDesc* result) {
    if (toType == typeFSRef) return fnfErr;
    std::string path;
    OSStatus status = MacPath(url, path);
    if (status != noErr) return status;
    if (toType == typeAlias) {
        // The path alone would not tell a folder.
        if (CFURLHasDirectoryPath(url)) path += ':';
        AliasHandle alias = nullptr;
        status = NewAliasMinimalFromFullPath(static_cast<SInt16>(path.size()), path.data(), nullptr,
                                             nullptr, &alias);
        return status == noErr ? AliasDesc(alias, result) : status;
    }
    Str255 pascal;
    pascal[0] = static_cast<unsigned char>(path.size());
    std::memcpy(pascal + 1, path.data(), path.size());
    FSSpec spec{};
    status = FSMakeFSSpec(0, 0, pascal, &spec);
    return status == noErr || status == fnfErr ? SpecDesc(spec, result) : status;
}

OSStatus Coerce(std::string_view bytes, DescType toType, AEDesc* result) {
    const auto given = CFRef<CFURLRef>::Adopt(
        CFURLCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                             static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8, nullptr));
    if (!given) return cfStringConversionErr;
    switch (toType) {
        case typeChar:
        case typeStyledText:
        case typeUnicodeText:
            return ToText(given.get(), toType, result);
        case typeObjectSpecifier:
            return ToObject(bytes, result);
        case typeFSRef:
        case typeFSS:
        case cFile:
        case typeAlias: {
            const auto url = CFRef<CFURLRef>::Adopt(CFURLCopyAbsoluteURL(given.get()));
            FSRef ref;
            if (!url) return memFullErr;
            return CFURLGetFSRef(url.get(), &ref) ? ExistingTo(ref, toType, result)
                                                  : MissingTo(url.get(), toType, result);
        }
        default:
            return errAECoercionFail;
    }
}

// Not for 'obj ' to 'furl', which asks the manager for the very same coercion.
constexpr DescType kToURL[] = {typeChar, typeStyledText, typeUnicodeText,
                               typeFSS,  typeFSRef,      typeAlias};
constexpr DescType kFromURL[] = {typeChar,  typeStyledText, typeUnicodeText, typeObjectSpecifier,
                                 typeFSRef, typeFSS,        cFile,           typeAlias};

AECoercionHandlerUPP ToURLHandler() {
    return reinterpret_cast<AECoercionHandlerUPP>(FURLCoerceDescToFURL);
}

AECoercionHandlerUPP FromURLHandler() {
    return reinterpret_cast<AECoercionHandlerUPP>(FURLCoerceFURLPtrToDesc);
}

}  // namespace

OSErr FURLCoerceFURLPtrToDesc(DescType fromType, const void* data, Size size, DescType toType,
                              SInt32, AEDesc* result) {
    if (result == nullptr) return paramErr;
    *result = {typeNull, nullptr};
    if (size < 0 || (data == nullptr && size > 0)) return paramErr;
    if (fromType != typeFileURL) return errAECoercionFail;
    const std::string_view bytes(static_cast<const char*>(data), static_cast<std::size_t>(size));
    return static_cast<OSErr>(Guarded([&] { return Coerce(bytes, toType, result); }));
}

OSStatus FURLInstallCoercionHandlers(void) {
    OSStatus status = noErr;
    for (const DescType type : kToURL) {
        if (status == noErr)
            status = AEInstallCoercionHandler(type, typeFileURL, ToURLHandler(), 0, true, false);
    }
    for (const DescType type : kFromURL) {
        if (status == noErr)
            status = AEInstallCoercionHandler(typeFileURL, type, FromURLHandler(), 0, false, false);
    }
    return status;
}

void furl::RemoveCoercionHandlers() {
    for (const DescType type : kToURL)
        (void)AERemoveCoercionHandler(type, typeFileURL, ToURLHandler(), false);
    for (const DescType type : kFromURL)
        (void)AERemoveCoercionHandler(typeFileURL, type, FromURLHandler(), false);
}
