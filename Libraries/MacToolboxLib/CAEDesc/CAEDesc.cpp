// Owning, replacing and coercing a descriptor.
#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"

#include <utility>

CAEDesc::~CAEDesc() {
    if (mDesc.dataHandle != nullptr) AEDisposeDesc(&mDesc);
}

void CAEDesc::Free() {
    if (mDesc.dataHandle != nullptr) AEDisposeDesc(&mDesc);
}

CAEDesc& CAEDesc::operator=(const CAEDesc& other) {
    Copy(&other.mDesc);
    return *this;
}

CAEDesc& CAEDesc::operator=(const CAEDescReader& other) {
    Copy(&other.GetDesc());
    return *this;
}

void CAEDesc::Set(DescType type, const char* data, Size size) {
    Free();
    FailOSErr(AECreateDesc(type, data, size, &mDesc));
}

void CAEDesc::Copy(const AEDesc* source) {
    if (source == &mDesc) return;
    Free();
    FailOSErr(AEDuplicateDesc(source, &mDesc));
}

void CAEDesc::Aquire(CAEDesc& other) {
    Free();
    mDesc = std::exchange(other.mDesc, AEDesc{typeNull, nullptr});
}

void CAEDesc::CoerceTo(DescType type) {
    if (Is(type)) return;
    CAEDesc coerced;
    coerced.CoerceTo(&mDesc, type);
    Aquire(coerced);
}

void CAEDesc::CoerceTo(const AEDesc* source, DescType type) {
    Free();
    FailOSErr(AECoerceDesc(source, type, &mDesc));
}
