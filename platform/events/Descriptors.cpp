// Descriptors: making, copying and disposing of them, and their data.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>

OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result) {
    if (result == nullptr || size < 0 || (data == nullptr && size > 0)) return paramErr;
    *result = {typeNull, nullptr};
    if (type == typeNull) return noErr;
    Handle handle = nullptr;
    const OSErr status = PtrToHand(data, &handle, size);
    if (status == noErr) *result = {type, handle};
    return status;
}

OSErr AEDisposeDesc(AEDesc* desc) {
    if (desc == nullptr) return paramErr;
    if (desc->dataHandle != nullptr) DisposeHandle(desc->dataHandle);
    *desc = {typeNull, nullptr};
    return noErr;
}

OSErr AEDuplicateDesc(const AEDesc* desc, AEDesc* result) {
    if (desc == nullptr || result == nullptr) return paramErr;
    const AEDesc source = *desc;
    *result = {typeNull, nullptr};
    if (source.dataHandle == nullptr) {
        result->descriptorType = source.descriptorType;
        return noErr;
    }
    return AECreateDesc(source.descriptorType, *source.dataHandle, GetHandleSize(source.dataHandle),
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
    BlockMoveData(*desc->dataHandle, buffer,
                  std::min(maximumSize, GetHandleSize(desc->dataHandle)));
    return noErr;
}
