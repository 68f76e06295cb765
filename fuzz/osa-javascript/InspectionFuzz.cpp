// Any text as a script that is run: its names, properties, handlers and result are asked for and
// shown, and its copy's, whether it failed or not.
#include <CoreServices/AEDataModel.h>

#include <cstdint>
#include <string_view>

#include "fuzz/osa-javascript/FuzzInstance.h"

namespace {

void discard(const char*, void*) {}

void show(ComponentInstance instance, OSAID value) {
    if (value == kOSANullScript) return;
    for (const SInt32 mode : {kOSAModeNull, kOSAModeDisplayForHumans}) {
        AEDesc text;
        AEInitializeDesc(&text);
        (void)OSADisplay(instance, value, typeUnicodeText, mode, &text);
        AEDisposeDesc(&text);
    }
    AEDesc desc;
    AEInitializeDesc(&desc);
    (void)OSACoerceToDesc(instance, value, typeWildCard, kOSAModeNull, &desc);
    AEDisposeDesc(&desc);
    if (OSADispose(instance, value) != noErr) std::abort();
}

using Lookup = decltype(&OSAGetProperty);
using Listing = decltype(&OSAGetPropertyNames);

/// Some of the names, which the script may have any number of.
void lookUpAll(ComponentInstance instance, OSAID script, Listing listing, Lookup lookup) {
    AEDescList names;
    SInt32 count = 0;
    AEInitializeDesc(&names);
    if (listing(instance, kOSAModeNull, script, &names) == noErr)
        (void)AECountItems(&names, &count);
    for (SInt32 index = 1; index <= count && index <= 8; ++index) {
        AEDesc name;
        OSAID found = kOSANullScript;
        if (AEGetNthDesc(&names, index, typeWildCard, nullptr, &name) != noErr) std::abort();
        (void)lookup(instance, kOSAModeNull, script, &name, &found);
        AEDisposeDesc(&name);
        show(instance, found);
    }
    AEDisposeDesc(&names);
}

void inspect(ComponentInstance instance, OSAID script) {
    lookUpAll(instance, script, OSAGetPropertyNames, OSAGetProperty);
    lookUpAll(instance, script, OSAGetHandlerNames, OSAGetHandler);
    // Names that a script that fails does not list.
    for (const std::string_view name : {"late", "Later"}) {
        AEDesc text;
        OSAID found = kOSANullScript;
        if (AECreateDesc(typeUTF8Text, name.data(), static_cast<Size>(name.size()), &text) != noErr)
            continue;
        (void)OSAGetProperty(instance, kOSAModeNull, script, &text, &found);
        AEDisposeDesc(&text);
        show(instance, found);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ComponentInstance instance = openComponent(20, 16 << 20);
    OSASetLogProc(discard, nullptr);
    AEDesc source;
    OSAID script = kOSANullScript, copy = kOSANullScript, result = kOSANullScript;
    if (AECreateDesc(typeUTF8Text, data, static_cast<Size>(size), &source) != noErr) return 0;
    if (OSACompile(instance, &source, kOSAModeNull, &script) == noErr) {
        if (OSAExecute(instance, script, kOSANullScript, kOSAModeNull, &result) == noErr)
            show(instance, result);
        inspect(instance, script);
        if (OSACopyID(instance, script, &copy) == noErr) {
            if (OSAExecute(instance, copy, script, kOSAModeNull, &result) == noErr)
                show(instance, result);
            inspect(instance, copy);
            (void)OSADispose(instance, copy);
        }
        (void)OSADispose(instance, script);
    }
    AEDisposeDesc(&source);
    return 0;
}
