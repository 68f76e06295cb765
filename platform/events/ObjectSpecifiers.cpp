// Object specifiers: records of four fields.
#include <CoreServices/AEObjects.h>
#include <CoreServices/MacErrors.h>

namespace {

OSErr makeSpecifier(DescType desiredClass, const AEDesc& container, DescType keyForm,
                    const AEDesc& keyData, AEDesc* result) {
    OSErr status = AECreateList(nullptr, 0, true, result);
    const auto then = [&](OSErr next) { status = next; };
    if (status == noErr) {
        then(AEPutKeyPtr(result, keyAEDesiredClass, typeType, &desiredClass, sizeof desiredClass));
    }
    if (status == noErr) {
        then(AEPutKeyPtr(result, keyAEKeyForm, typeEnumerated, &keyForm, sizeof keyForm));
    }
    if (status == noErr) then(AEPutKeyDesc(result, keyAEKeyData, &keyData));
    if (status == noErr) then(AEPutKeyDesc(result, keyAEContainer, &container));
    if (status != noErr) {
        AEDisposeDesc(result);
        return status;
    }
    result->descriptorType = typeObjectSpecifier;
    return noErr;
}

}  // namespace

OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm,
                         AEDesc* keyData, Boolean disposeInputs, AEDesc* objSpecifier) {
    OSErr status = paramErr;
    AEDesc made{typeNull, nullptr};
    if (keyData != nullptr && objSpecifier != nullptr) {
        const AEDesc outermost = container != nullptr ? *container : AEDesc{typeNull, nullptr};
        status = makeSpecifier(desiredClass, outermost, keyForm, *keyData, &made);
    }
    if (disposeInputs != 0) {
        if (container != nullptr) AEDisposeDesc(container);
        if (keyData != nullptr) AEDisposeDesc(keyData);
    }
    // Last: the result may take the place of an input.
    if (objSpecifier != nullptr) *objSpecifier = made;
    return status;
}
