// Scripts in files: a resource, or the data fork with the trailer, or text.
#include "platform/osa/ScriptFiles.h"

#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>
#include <OSA/ScriptingComponents.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "platform/base/FourCC.h"
#include "platform/base/Result.h"
#include "platform/osa/GenericComponent.h"
#include "platform/osa/StoredScripts.h"
#include "platform/resources/ResourceThread.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr ResType kScriptResource = FourCC("scpt");
constexpr ResID kScriptID = 128;
constexpr OSType kScriptFileType = FourCC("osas");
/// No script is longer; what is may be anything.
constexpr SInt64 kLongestScript = SInt64{64} << 20;

ByteSpan bytesOf(const AEDesc& desc) {
    return desc.dataHandle == nullptr
               ? ByteSpan()
               : ByteSpan(reinterpret_cast<const std::byte*>(*desc.dataHandle),
                          static_cast<std::size_t>(AEGetDescDataSize(&desc)));
}

/// A descriptor that is disposed of.
struct OwnedDesc {
    AEDesc desc{typeNull, nullptr};

    OwnedDesc() = default;
    OwnedDesc(OwnedDesc&& other) noexcept : desc(other.desc) { AEInitializeDesc(&other.desc); }
    OwnedDesc& operator=(OwnedDesc&&) = delete;
    ~OwnedDesc() { AEDisposeDesc(&desc); }

    ByteSpan bytes() const { return bytesOf(desc); }
};

/// A resource file open for a while. What the thread had set is as before afterwards, and a file
/// that was open for writing already stays open.
class ResourceFileInUse {
  public:
    ResourceFileInUse(const FSRef& file, SInt8 permission)
        : previous_(CurResFile()), loads_(thread_.loads) {
        const auto open = thread_.chain();
        number_ = FSOpenResFile(&file, permission);
        status_ = ResError();
        closes_ = status_ == noErr &&
                  std::none_of(open.begin(), open.end(),
                               [&](const auto& known) { return known->number() == number_; });
        thread_.loads = true;
    }
    ~ResourceFileInUse() {
        if (closes_) CloseResFile(number_);
        UseResFile(previous_);
        thread_.loads = loads_;
    }
    ResourceFileInUse(const ResourceFileInUse&) = delete;
    ResourceFileInUse& operator=(const ResourceFileInUse&) = delete;

    OSErr status() const { return status_; }

  private:
    ResourceThread& thread_ = ResourceThread::mine();
    ResFileRefNum previous_;
    bool loads_;
    ResFileRefNum number_ = -1;
    OSErr status_ = noErr;
    bool closes_ = false;
};

class ForkInUse {
  public:
    ForkInUse(const FSRef& file, SInt8 permission)
        : status_(FSOpenFork(&file, 0, nullptr, permission, &number_)) {}
    ~ForkInUse() { close(); }
    ForkInUse(const ForkInUse&) = delete;
    ForkInUse& operator=(const ForkInUse&) = delete;

    OSErr status() const { return status_; }
    SInt16 number() const { return number_; }
    OSErr close() {
        if (status_ != noErr) return status_;
        status_ = rfNumErr;
        return FSCloseFork(number_);
    }

  private:
    SInt16 number_ = 0;
    OSErr status_;
};

/// The file's script resource; errOSABadStorageType when it has none, or no fork. mapReadErr: a
/// damaged fork.
Result<OwnedDesc> readScriptResource(const FSRef& file) {
    const ResourceFileInUse fork(file, fsRdPerm);
    if (fork.status() == eofErr) return Failure(errOSABadStorageType);
    if (fork.status() != noErr) return Failure(fork.status());
    const Handle resource = Get1Resource(kScriptResource, kScriptID);
    if (resource == nullptr)
        return Failure(ResError() == resNotFound ? OSStatus{errOSABadStorageType} : ResError());
    OwnedDesc result;
    const OSErr status =
        AECreateDesc(typeOSAGenericStorage, *resource, GetHandleSize(resource), &result.desc);
    if (status != noErr) return Failure(status);
    return result;
}

Result<OwnedDesc> readDataFork(const FSRef& file) {
    const ForkInUse fork(file, fsRdPerm);
    if (fork.status() != noErr) return Failure(fork.status());
    SInt64 size = 0;
    if (const OSErr status = FSGetForkSize(fork.number(), &size); status != noErr)
        return Failure(status);
    if (size > kLongestScript) return Failure(fileBoundsErr);
    OwnedDesc result;
    result.desc = {typeOSAGenericStorage, NewHandle(static_cast<Size>(size))};
    if (result.desc.dataHandle == nullptr) return Failure(memFullErr);
    const OSErr status = FSReadFork(fork.number(), fsFromStart, 0, static_cast<UInt32>(size),
                                    *result.desc.dataHandle, nullptr);
    if (status != noErr) return Failure(status);
    return result;
}

/// errOSABadStorageType for what is no text.
Result<std::u16string> decodeSource(ByteSpan bytes) {
    std::u16string units;
    const ByteOrderMark mark = detectMark(bytes);
    if (mark.length != 0) {
        if (!decodeText(bytes.subspan(mark.length), mark.encoding, units))
            return Failure(errOSABadStorageType);
        return units;
    }
    // a script in a form of its own that was cut, or no script at all
    if (asText(bytes).find('\0') != std::string_view::npos) return Failure(errOSABadStorageType);
    if (decodeText(bytes, kTextEncodingUTF8, units) ||
        decodeText(bytes, CFStringGetSystemEncoding(), units))
        return units;
    return Failure(errOSABadStorageType);
}

OSAError makeText(ByteSpan bytes, AEDesc* text) {
    const auto units = decodeSource(bytes);
    if (!units) return units.status();
    return AECreateDesc(typeUnicodeText, units->data(),
                        static_cast<Size>(units->size() * sizeof(char16_t)), text);
}

OSAError compileText(ComponentInstance instance, ByteSpan bytes, SInt32 modeFlags, OSAID& script) {
    OwnedDesc source;
    const OSAError status = makeText(bytes, &source.desc);
    return status != noErr ? status : OSACompile(instance, &source.desc, modeFlags, &script);
}

OSAError loadStored(ComponentInstance instance, const AEDesc& stored, Boolean& storable,
                    SInt32 modeFlags, OSAID& script) {
    const OSAError status = OSALoad(instance, &stored, modeFlags, &script);
    if (status != noErr) return status;
    SInt32 hasSource = 0;
    // a component that does not tell keeps what it loads; nobody keeps an interpreter's line
    const OSAError told = OSAGetScriptInfo(instance, script, kOSACanGetSource, &hasSource);
    const bool isComplete = told != noErr || hasSource != 0;
    storable = isComplete && !asText(bytesOf(stored)).starts_with("#!") ? 1 : 0;
    return noErr;
}

/// What a file holds: a stored script, or text without a trailer.
struct FileContent {
    OwnedDesc desc;
    bool isText = false;
};

Result<FileContent> readFile(const FSRef& file) {
    auto resource = readScriptResource(file);
    if (resource) return FileContent{*std::move(resource), false};
    const bool isDamaged = resource.status() == mapReadErr;
    if (!isDamaged && resource.status() != errOSABadStorageType) return Failure(resource.status());
    OSA_TRY(OwnedDesc data, readDataFork(file));
    const bool isText = !endsAsStoredScript(data.bytes());
    // what the damaged fork held matters then
    if (isDamaged && data.bytes().empty()) return Failure(resource.status());
    return FileContent{std::move(data), isText};
}

Result<bool> hasScriptResource(const FSRef& file) {
    const ResourceFileInUse fork(file, fsRdPerm);
    if (fork.status() == eofErr || fork.status() == mapReadErr) return false;
    if (fork.status() != noErr) return Failure(fork.status());
    return Get1Resource(kScriptResource, kScriptID) != nullptr || ResError() != resNotFound;
}

OSErr writeScriptResource(const FSRef& file, ByteSpan stored) {
    const ResourceFileInUse fork(file, fsRdWrPerm);
    if (fork.status() != noErr) return fork.status();
    const Handle resource = Get1Resource(kScriptResource, kScriptID);
    if (resource == nullptr) return ResError();
    // before the handle changes: a protected resource stays as it is
    ChangedResource(resource);
    if (const OSErr status = ResError(); status != noErr) return status;
    SetHandleSize(resource, static_cast<Size>(stored.size()));
    if (const OSErr status = MemError(); status != noErr) return status;
    std::memcpy(*resource, stored.data(), stored.size());
    WriteResource(resource);
    return ResError();
}

/// Has the fork hold `start` and, behind it, what it held, up to `size`.
OSErr overwrite(SInt16 fork, ByteSpan start, SInt64 size) {
    const OSErr status =
        FSWriteFork(fork, fsFromStart, 0, static_cast<UInt32>(start.size()), start.data(), nullptr);
    return status != noErr ? status : FSSetForkSize(fork, fsFromStart, size);
}

/// The fork is cut last, and has its old bytes again when something fails: it never holds less than
/// it did for want of room.
OSErr writeDataFork(const FSRef& file, ByteSpan stored) {
    if (stored.size() > static_cast<std::size_t>(kLongestScript)) return fileBoundsErr;
    ForkInUse fork(file, fsRdWrPerm);
    if (fork.status() != noErr) return fork.status();
    SInt64 size = 0;
    if (const OSErr status = FSGetForkSize(fork.number(), &size); status != noErr) return status;
    const auto length = static_cast<SInt64>(stored.size());
    std::vector<std::byte> old(static_cast<std::size_t>(std::min(size, length)));
    OSErr status = FSReadFork(fork.number(), fsFromStart, 0, static_cast<UInt32>(old.size()),
                              old.data(), nullptr);
    if (status != noErr) return status;
    status = overwrite(fork.number(), stored, length);
    if (status != noErr) overwrite(fork.number(), old, size);
    const OSErr closed = fork.close();
    return status != noErr ? status : closed;
}

/// Only tells what the file is; that it cannot be told fails nothing.
void giveFileType(const FSRef& file) {
    FSCatalogInfo info{};
    if (FSGetCatalogInfo(&file, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr) != noErr)
        return;
    if (info.finderInfo.fdType != 0) return;
    info.finderInfo.fdType = kScriptFileType;
    FSSetCatalogInfo(&file, kFSCatInfoFinderInfo, &info);
}

OSAError textOf(const FSRef& file, AEDesc* text) {
    const auto content = readFile(file);
    if (!content) return content.status();
    return content->isText ? makeText(content->desc.bytes(), text) : OSAError{errOSABadStorageType};
}

OSAError textOf(ByteSpan bytes, AEDesc* text) {
    return endsAsStoredScript(bytes) ? OSAError{errOSABadStorageType} : makeText(bytes, text);
}

OSAError subTypeOf(const FSRef& file, OSType& subType) {
    const auto content = readFile(file);
    if (!content) return content.status();
    return storedSubType(content->desc.desc, subType);
}

}  // namespace

OSAError loadScriptFile(ComponentInstance instance, const FSRef& file, Boolean& storable,
                        SInt32 modeFlags, OSAID& script) try {
    const auto content = readFile(file);
    if (!content) return content.status();
    if (!content->isText)
        return loadStored(instance, content->desc.desc, storable, modeFlags, script);
    storable = 0;
    return compileText(instance, content->desc.bytes(), modeFlags, script);
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSAError storeScriptFile(ComponentInstance instance, OSAID script, DescType desiredType,
                         SInt32 modeFlags, const FSRef& file) try {
    OwnedDesc stored;
    const OSAError status = OSAStore(instance, script, desiredType, modeFlags, &stored.desc);
    if (status != noErr) return status;
    const auto isResource = hasScriptResource(file);
    if (!isResource) return isResource.status();
    const OSErr written = *isResource ? writeScriptResource(file, stored.bytes())
                                      : writeDataFork(file, stored.bytes());
    if (written == noErr) giveFileType(file);
    return written;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

}  // namespace osa

OSAError OSAGetStoredSubType(const FSRef* scriptFile, OSType* subType) try {
    if (subType != nullptr) *subType = 0;
    if (scriptFile == nullptr || subType == nullptr) return paramErr;
    return osa::subTypeOf(*scriptFile, *subType);
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSAError OSACopyScriptText(const FSRef* scriptFile, AEDesc* resultingText) try {
    if (resultingText != nullptr) AEInitializeDesc(resultingText);
    if (scriptFile == nullptr || resultingText == nullptr) return paramErr;
    return osa::textOf(*scriptFile, resultingText);
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSAError OSADecodeScriptText(const void* bytes, Size length, AEDesc* resultingText) try {
    if (resultingText != nullptr) AEInitializeDesc(resultingText);
    if (bytes == nullptr || length < 0 || resultingText == nullptr) return paramErr;
    return osa::textOf(
        osa::ByteSpan(static_cast<const std::byte*>(bytes), static_cast<std::size_t>(length)),
        resultingText);
} catch (const std::bad_alloc&) {
    return memFullErr;
}
