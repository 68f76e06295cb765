// The calls about forks by name.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <new>

#include "platform/files/References.h"
#include "platform/files/forks/ForkOpening.h"

namespace osa {
namespace {

/// Every file has both.
Result<void> createFork(const FSRef* ref, std::u16string_view name) {
    OSA_TRY(const Located object, locate(ref));
    OSA_CHECK(forkNamed(name));
    return Failure(object.status.isRegular() ? errFSForkExists : notAFileErr);
}

Result<void> deleteFork(const FSRef* ref, std::u16string_view name) {
    if (ref == nullptr) return Failure(paramErr);
    OSA_TRY(const ForkKind fork, forkNamed(name));
    return emptyFork(*ref, fork);
}

OSErr withName(const FSRef* ref, UniCharCount length, const UniChar* name,
               Result<void> (*work)(const FSRef*, std::u16string_view)) {
    if (name == nullptr && length > 0) return paramErr;
    try {
        const std::u16string_view text(reinterpret_cast<const char16_t*>(name), length);
        return static_cast<OSErr>(work(ref, text).status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

}  // namespace
}  // namespace osa

OSErr FSGetDataForkName(HFSUniStr255* dataForkName) {
    if (dataForkName == nullptr) return paramErr;
    *dataForkName = {};
    return noErr;
}

OSErr FSGetResourceForkName(HFSUniStr255* resourceForkName) {
    if (resourceForkName == nullptr) return paramErr;
    *resourceForkName = {};
    resourceForkName->length = static_cast<UInt16>(osa::kResourceForkName.size());
    std::copy(osa::kResourceForkName.begin(), osa::kResourceForkName.end(),
              resourceForkName->unicode);
    return noErr;
}

OSErr FSCreateFork(const FSRef* ref, UniCharCount forkNameLength, const UniChar* forkName) {
    return osa::withName(ref, forkNameLength, forkName, osa::createFork);
}

OSErr FSDeleteFork(const FSRef* ref, UniCharCount forkNameLength, const UniChar* forkName) {
    return osa::withName(ref, forkNameLength, forkName, osa::deleteFork);
}
