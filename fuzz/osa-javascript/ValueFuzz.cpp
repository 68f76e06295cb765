// Any flattened descriptor as a script's value: it becomes a value or is refused, is shown, and
// coerced to what it can be, and leaves nothing behind.
#include <CoreServices/AEDataModel.h>

#include <cstdint>
#include <initializer_list>

#include "fuzz/osa-javascript/FuzzInstance.h"

namespace {

void use(ComponentInstance instance, OSAID value) {
    SInt32 best = 0;
    (void)OSAGetScriptInfo(instance, value, kOSAScriptBestType, &best);
    for (const DescType type :
         {DescType{typeWildCard}, DescType{typeUnicodeText}, DescType{typeAEList},
          DescType{typeAERecord}, static_cast<DescType>(best)}) {
        AEDesc result;
        AEInitializeDesc(&result);
        (void)OSACoerceToDesc(instance, value, type, kOSAModeNull, &result);
        AEDisposeDesc(&result);
    }
    for (const SInt32 mode : {kOSAModeNull, kOSAModeDisplayForHumans}) {
        AEDesc text;
        AEInitializeDesc(&text);
        (void)OSADisplay(instance, value, typeUnicodeText, mode, &text);
        AEDisposeDesc(&text);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ComponentInstance instance = openComponent(1000, 64 << 20);
    AEDesc desc;
    if (AEUnflattenDescFromBytes(data, size, &desc) != noErr) return 0;
    OSAID value = kOSANullScript;
    if (OSACoerceFromDesc(instance, &desc, kOSAModeNull, &value) == noErr) {
        use(instance, value);
        if (OSADispose(instance, value) != noErr) std::abort();
    }
    AEDisposeDesc(&desc);
    return 0;
}
