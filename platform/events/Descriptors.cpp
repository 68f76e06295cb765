// Descriptors: making, copying and disposing of them, and their data.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>

#include "platform/events/ItemBlock.h"

void AEInitializeDesc(AEDesc* desc) {
    if (desc != nullptr) *desc = {typeNull, nullptr};
}

OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result) {
    if (result == nullptr) return paramErr;
    AEInitializeDesc(result);
    if (size < 0 || (data == nullptr && size > 0)) return paramErr;
    if (type == typeNull) return noErr;
    const Handle handle = NewHandle(size);
    if (handle == nullptr) return memFullErr;
    osa::copyShared(*handle, data, size);
    *result = {type, handle};
    return noErr;
}

OSErr AEDisposeDesc(AEDesc* desc) {
    if (desc == nullptr) return paramErr;
    if (desc->dataHandle != nullptr) DisposeHandle(desc->dataHandle);
    AEInitializeDesc(desc);
    return noErr;
}

OSErr AEDuplicateDesc(const AEDesc* desc, AEDesc* result) {
    if (result == nullptr) return paramErr;
    const AEDesc source = desc != nullptr ? *desc : AEDesc{typeNull, nullptr};
    AEInitializeDesc(result);
    if (desc == nullptr) return paramErr;
    if (source.dataHandle == nullptr) {
        *result = source;
        return noErr;
    }
    return AECreateDesc(source.descriptorType, *source.dataHandle, AEGetDescDataSize(&source),
                        result);
}

Size AEGetDescDataSize(const AEDesc* desc) {
    return desc == nullptr || desc->dataHandle == nullptr ? 0 : GetHandleSize(desc->dataHandle);
}

OSErr AEGetDescData(const AEDesc* desc, void* buffer, Size maximumSize) {
    if (desc == nullptr || maximumSize < 0 || (buffer == nullptr && maximumSize > 0)) {
        return paramErr;
    }
    if (desc->dataHandle == nullptr) return noErr;
    osa::copyShared(buffer, *desc->dataHandle, std::min(maximumSize, AEGetDescDataSize(desc)));
    return noErr;
}

OSErr AEReplaceDescData(DescType type, const void* data, Size size, AEDesc* desc) {
    if (desc == nullptr) return paramErr;
    // The data may be those of the descriptor itself.
    AEDesc replacement;
    const OSErr status = AECreateDesc(type, data, size, &replacement);
    if (status != noErr) return status;
    AEDisposeDesc(desc);
    *desc = replacement;
    return noErr;
}
