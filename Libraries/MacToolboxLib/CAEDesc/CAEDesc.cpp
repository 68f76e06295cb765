// Owning, replacing and coercing a descriptor.
#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <limits>
#include <memory>
#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"

const CAEDesc CAEDesc::sTrue(true);
const CAEDesc CAEDesc::sFalse(false);
const CAEDesc CAEDesc::sEmpty;

CAEDesc::CAEDesc(bool b) {
    const UInt8 byte = b ? 1 : 0;
    FailOSErr(AECreateDesc(typeBoolean, &byte, sizeof byte, &mDesc));
}

CAEDesc::CAEDesc(const ProcessSerialNumber* psn) {
    FailOSErr(AECreateDesc(typeProcessSerialNumber, psn, sizeof *psn, &mDesc));
}

CAEDesc::CAEDesc(const unsigned char* pstr) {
    FailOSErr(pstr == nullptr ? OSErr{paramErr}
                              : AECreateDesc(typeChar, pstr + 1, pstr[0], &mDesc));
}

CAEDesc::CAEDesc(DescType type, Handle handle) {
    CopyContent(type, handle);
}

CAEDesc::CAEDesc(const AEDesc* event, AEKeyword keyword, DescType desiredType) {
    FailOSErr(AEGetParamDesc(event, keyword, desiredType, &mDesc));
}

CAEDesc::~CAEDesc() {
    CAEDesc::Free();
}

void CAEDesc::Free() {
    if (mDesc.dataHandle != nullptr) AEDisposeDesc(&mDesc);
}

/// Free, and away with the type of a descriptor that had no data.
void CAEDesc::Clear() {
    Free();
    mDesc.descriptorType = typeNull;
}

CAEDesc& CAEDesc::operator=(const CAEDesc& other) {
    Copy(&other.mDesc);
    return *this;
}

CAEDesc& CAEDesc::operator=(const CAEDescReader& other) {
    Copy(&other.GetDesc());
    return *this;
}

void CAEDesc::CopyContent(DescType type, Handle handle) {
    const SHandleState state(handle);
    HLock(handle);
    FailOSErr(handle == nullptr ? OSErr{nilHandleErr}
                                : AECreateDesc(type, *handle, GetHandleSize(handle), &mDesc));
}

void CAEDesc::Set(DescType type, const char* data, SInt32 size) {
    Clear();
    FailOSErr(AECreateDesc(type, data, size, &mDesc));
}

void CAEDesc::Set(DescType type, Handle handle) {
    Clear();
    CopyContent(type, handle);
}

void CAEDesc::SetString(CFStringRef s) {
    Clear();
    if (s == nullptr) return;
    const CFIndex length = CFStringGetLength(s);
    constexpr CFIndex longest = std::numeric_limits<Size>::max() / sizeof(UniChar);
    if (length > longest) FailOSErr(memFullErr);
    const auto size = static_cast<Size>(length * static_cast<CFIndex>(sizeof(UniChar)));
    if (const UniChar* const units = CFStringGetCharactersPtr(s)) {
        Set(typeUnicodeText, reinterpret_cast<const char*>(units), size);
        return;
    }
    const std::unique_ptr<char, decltype(&DisposePtr)> buffer(NewPtr(size), DisposePtr);
    FailNIL(buffer.get());
    CFStringGetCharacters(s, CFRangeMake(0, length), reinterpret_cast<UniChar*>(buffer.get()));
    Set(typeUnicodeText, buffer.get(), size);
}

void CAEDesc::Copy(const AEDesc* source) {
    const bool isOwnData = source != nullptr && source->dataHandle != nullptr &&
                           source->dataHandle == mDesc.dataHandle;
    if (source == &mDesc || isOwnData) return;
    Clear();
    FailOSErr(AEDuplicateDesc(source, &mDesc));
}

void CAEDesc::Aquire(CAEDesc& other) {
    Clear();
    mDesc = std::exchange(other.mDesc, AEDesc{typeNull, nullptr});
}

void CAEDesc::MakeList() {
    Clear();
    FailOSErr(AECreateList(nullptr, 0, false, &mDesc));
}

void CAEDesc::CoerceTo(DescType type) {
    if (Is(type)) return;
    CAEDesc coerced;
    coerced.CoerceTo(&mDesc, type);
    Aquire(coerced);
}

void CAEDesc::CoerceTo(const AEDesc* source, DescType type) {
    // Of a descriptor that may be this one.
    AEDesc coerced{typeNull, nullptr};
    const OSErr status = AECoerceDesc(source, type, &coerced);
    Clear();
    FailOSErr(status);
    mDesc = coerced;
}
