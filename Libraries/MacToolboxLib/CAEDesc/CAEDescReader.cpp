// A descriptor's data as it is, and what kind of thing it is.
#include "Libraries/MacToolboxLib/CAEDesc/CAEDescReader.h"

#include <CoreServices/AEObjects.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <memory>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"

void CAEDescReader::FailOSErr(OSStatus status) const {
    ::FailOSErr(status);
}

void CAEDescReader::CoerceTo(DescType type, CAEDesc& out) const {
    // `out` may be this very object.
    CAEDesc coerced;
    coerced.CoerceTo(&mDesc, type);
    out.Aquire(coerced);
}

/// For callers that would read the result by the type they asked for: a handler may have answered
/// with another one.
void CAEDescReader::CoerceExactly(DescType type, CAEDesc& out) const {
    CAEDesc coerced;
    coerced.CoerceTo(&mDesc, type);
    if (!coerced.Is(type)) FailOSErr(errAECoercionFail);
    out.Aquire(coerced);
}

void CAEDescReader::GetData(char* buffer, SInt32 size) const {
    FailOSErr(AEGetDescData(&mDesc, buffer, size));
}

char* CAEDescReader::CopyPtr() const {
    const Size size = AEGetDescDataSize(&mDesc);
    std::unique_ptr<char, decltype(&DisposePtr)> block(NewPtr(size), DisposePtr);
    if (block == nullptr) FailOSErr(MemError());
    GetData(block.get(), size);
    return block.release();
}

Handle CAEDescReader::CopyHandle() const {
    const Size size = AEGetDescDataSize(&mDesc);
    SHandle block(NewHandle(size));
    if (block.Get() == nullptr) FailOSErr(MemError());
    GetData(*block.Get(), size);
    return block.Release();
}

bool CAEDescReader::IsText() const {
    switch (GetType()) {
        case typeChar:
        case typeStyledText:
        case typeUnicodeText:
        case typeIntlText:
        case typeUTF8Text:
        case typeEncodedString:
        case typeStyledUnicodeText:
            return true;
        default:
            return false;
    }
}

/// False for whatever is no type code and cannot become one.
bool CAEDescReader::HoldsCode(OSType code) const {
    try {
        CAEDesc coerced;
        if (!Is(typeType)) CoerceTo(typeType, coerced);
        OSType value = 0;
        const CAEDescReader& holder = Is(typeType) ? *this : coerced;
        holder.GetData(reinterpret_cast<char*>(&value), sizeof value);
        return value == code;
    } catch (OSStatus) {
        return false;
    }
}

bool CAEDescReader::IsUndefined() const {
    return HoldsCode(cUndefined);
}

bool CAEDescReader::IsMissingValue() const {
    return HoldsCode(cMissingValue);
}

bool CAEDescReader::EmptyList() const {
    return (Is(typeAEList) || Is(typeAERecord)) && CountItems() == 0;
}
