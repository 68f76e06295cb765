// Descriptors as streams of bytes and back.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <limits>
#include <new>

#include "platform/events/FlattenedForm.h"

namespace {

std::span<std::byte> bytesAt(void* data, Size size) {
    return {static_cast<std::byte*>(data), static_cast<std::size_t>(size)};
}

/// Puts the data of a new descriptor into host order.
OSStatus turned(const osa::FlattenedHead& head, const AEDesc& made) try {
    if (made.dataHandle != nullptr) {
        const auto size = static_cast<Size>(head.size);
        return osa::fromFlattenedForm(head, bytesAt(*made.dataHandle, size));
    }
    // The null descriptor has nowhere to keep data, which it should not have.
    return head.size == 0 && !head.isContainer ? noErr : errAECorruptData;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

}  // namespace

Size AESizeOfFlattenedDesc(const AEDesc* desc) {
    constexpr Size head = osa::kFlattenedHeadSize;
    const Size size = AEGetDescDataSize(desc);
    return desc == nullptr || size > std::numeric_limits<Size>::max() - head ? 0 : head + size;
}

OSStatus AEFlattenDesc(const AEDesc* desc, Ptr buffer, Size bufferSize, Size* actualSize) try {
    if (actualSize != nullptr) *actualSize = 0;
    if (desc == nullptr || bufferSize < 0 || (buffer == nullptr && bufferSize > 0)) return paramErr;
    const Size needed = AESizeOfFlattenedDesc(desc);
    if (needed == 0) return memFullErr;
    if (actualSize != nullptr) *actualSize = needed;
    if (bufferSize < needed) return errAEBufferTooSmall;
    const osa::ByteSpan data = osa::dataOf(*desc);
    const osa::FlattenedHead head{desc->descriptorType, static_cast<UInt32>(data.size()),
                                  osa::isFlattenedContainer(desc->descriptorType, data)};
    osa::writeFlattenedHead(head, reinterpret_cast<std::byte*>(buffer));
    Ptr const copy = buffer + osa::kFlattenedHeadSize;
    const auto size = static_cast<Size>(data.size());
    osa::copyShared(copy, data.data(), size);
    return osa::toFlattenedForm(desc->descriptorType, bytesAt(copy, size));
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSStatus AEUnflattenDescFromBytes(const void* buffer, size_t bufferSize, AEDesc* result) {
    if (result == nullptr) return paramErr;
    AEInitializeDesc(result);
    if (buffer == nullptr) return paramErr;
    const osa::ByteSpan bytes(static_cast<const std::byte*>(buffer), bufferSize);
    const auto head = osa::readFlattenedHead(bytes);
    if (!head) return head.status();
    AEDesc made;
    const OSErr created = AECreateDesc(head->type, bytes.data() + osa::kFlattenedHeadSize,
                                       static_cast<Size>(head->size), &made);
    if (created != noErr) return created;
    const OSStatus status = turned(*head, made);
    if (status == noErr) {
        *result = made;
    } else {
        AEDisposeDesc(&made);
    }
    return status;
}

OSStatus AEUnflattenDesc(const void* buffer, AEDesc* result) {
    if (result == nullptr) return paramErr;
    AEInitializeDesc(result);
    if (buffer == nullptr) return paramErr;
    // The head tells how many bytes there are.
    osa::ByteReader head(buffer, osa::kFlattenedHeadSize);
    head.skip(12);
    return AEUnflattenDescFromBytes(buffer, size_t{osa::kFlattenedHeadSize} + head.u32(), result);
}
