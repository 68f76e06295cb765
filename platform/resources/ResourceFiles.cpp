// Opening, closing and choosing resource files.
#include <CoreServices/Resources.h>

#include <string_view>

#include "platform/files/Forks.h"
#include "platform/resources/ResourceThread.h"

using namespace osa;

namespace {

Result<SInt16> open(ResourceThread& thread, const FSRef* ref, ForkKind kind) {
    if (ref == nullptr) return Failure(paramErr);
    auto source = openForkForReading(*ref, kind);
    // To callers of the Resource Manager an absent fork is one that ends before its header.
    if (source.status() == errFSForkNotFound) return Failure(eofErr);
    OSA_CHECK(source);
    OSA_TRY(ResourceFork fork, ResourceFork::open(*std::move(source)));
    const auto file = std::make_shared<OpenResourceFile>(std::move(fork));
    OSA_TRY(const SInt16 number, addOpenFile(file));
    file->setNumber(number);
    thread.use(file);
    return number;
}

Result<ForkKind> forkNamed(UniCharCount length, const UniChar* name) {
    constexpr std::u16string_view kResourceForkName = u"RESOURCE_FORK";
    if (length == 0) return ForkKind::data;
    const auto* const units = reinterpret_cast<const char16_t*>(name);
    if (name == nullptr || std::u16string_view(units, length) != kResourceForkName)
        return Failure(errFSBadForkName);
    return ForkKind::resource;
}

Result<OpenResourceFilePtr> fileOfNumber(SInt16 number) {
    auto file = findOpenFile<OpenResourceFile>(number);
    if (!file) return Failure(resFNotFound);
    return file;
}

}  // namespace

OSErr ResError() {
    return ResourceThread::mine().error;
}

ResFileRefNum FSOpenResFile(const FSRef* ref, SInt8 /*permission*/) {
    return resourceCall<SInt16>(
        -1, [&](ResourceThread& thread) { return open(thread, ref, ForkKind::resource); });
}

OSErr FSOpenResourceFile(const FSRef* ref, UniCharCount forkNameLength, const UniChar* forkName,
                         SInt8 /*permission*/, ResFileRefNum* refNum) {
    const SInt16 number = resourceCall<SInt16>(-1, [&](ResourceThread& thread) -> Result<SInt16> {
        if (refNum == nullptr) return Failure(paramErr);
        OSA_TRY(const ForkKind kind, forkNamed(forkNameLength, forkName));
        return open(thread, ref, kind);
    });
    if (refNum != nullptr) *refNum = number;
    return ResError();
}

void CloseResFile(ResFileRefNum refNum) {
    resourceCall([&](ResourceThread& thread) -> Result<void> {
        OSA_TRY(const OpenResourceFilePtr file, fileOfNumber(refNum));
        thread.forget(file);
        removeOpenFile(refNum);
        return {};
    });
}

ResFileRefNum CurResFile() {
    return resourceCall<SInt16>(0, [](ResourceThread& thread) -> Result<SInt16> {
        const OpenResourceFilePtr file = thread.current();
        return file ? file->number() : SInt16{0};
    });
}

void UseResFile(ResFileRefNum refNum) {
    resourceCall([&](ResourceThread& thread) -> Result<void> {
        if (refNum == 0) {
            thread.useNone();
            return {};
        }
        OSA_TRY(const OpenResourceFilePtr file, fileOfNumber(refNum));
        thread.use(file);
        return {};
    });
}

ResFileRefNum HomeResFile(Handle resource) {
    return resourceCall<SInt16>(-1, [&](ResourceThread& thread) -> Result<SInt16> {
        const OpenResourceFilePtr file = thread.home(resource);
        if (!file) return Failure(resNotFound);
        return file->number();
    });
}

void SetResLoad(Boolean load) {
    resourceCall([&](ResourceThread& thread) -> Result<void> {
        thread.loads = load != 0;
        return {};
    });
}
