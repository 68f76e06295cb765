// Any text as a script that is stored run-only: what is stored loads, and is stored the same again.
#include <CoreServices/AEDataModel.h>

#include <cstdint>
#include <cstring>

#include "fuzz/osa-javascript/FuzzInstance.h"

namespace {

bool areEqual(const AEDesc& one, const AEDesc& other) {
    const Size size = AEGetDescDataSize(&one);
    return size == AEGetDescDataSize(&other) &&
           std::memcmp(*one.dataHandle, *other.dataHandle, static_cast<std::size_t>(size)) == 0;
}

/// A script that is too deep, too, is left alone; one that the room reduces wrongly it refuses with
/// an error of its own, which may not be.
bool isExpected(ComponentInstance instance) {
    AEDesc message;
    AEInitializeDesc(&message);
    if (OSAScriptError(instance, kOSAErrorMessage, typeUTF8Text, &message) != noErr) return true;
    const bool deep = AEGetDescDataSize(&message) >= 13 &&
                      std::memcmp(*message.dataHandle, "InternalError", 13) == 0;
    AEDisposeDesc(&message);
    return deep;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ComponentInstance instance = openComponent(5000, 256 << 20);
    AEDesc source, stored, again;
    AEInitializeDesc(&stored);
    AEInitializeDesc(&again);
    OSAID script = kOSANullScript, loaded = kOSANullScript;
    if (AECreateDesc(typeUTF8Text, data, static_cast<Size>(size), &source) != noErr) return 0;
    if (OSACompile(instance, &source, kOSAModeNull, &script) == noErr) {
        const OSAError status =
            OSAStore(instance, script, typeOSAGenericStorage, kOSAModePreventGetSource, &stored);
        if (status == errOSAScriptError && !isExpected(instance)) std::abort();
        if (status == noErr) {
            if (OSALoad(instance, &stored, kOSAModeNull, &loaded) != noErr) std::abort();
            const OSAError second =
                OSAStore(instance, loaded, typeOSAGenericStorage, kOSAModeNull, &again);
            if (second == noErr && !areEqual(stored, again)) std::abort();
            (void)OSADispose(instance, loaded);
        }
        (void)OSADispose(instance, script);
    }
    AEDisposeDesc(&again);
    AEDisposeDesc(&stored);
    AEDisposeDesc(&source);
    return 0;
}
