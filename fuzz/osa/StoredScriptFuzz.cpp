// Any bytes as a stored script: the trailer, and loading through the generic component.
#include <OpenScripting/OSAGeneric.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tests/platform/osa/FakeComponent.h"

namespace {

using Language = osa::test::FakeLanguage<'fake'>;

void require(bool condition) {
    if (!condition) std::abort();
}

ComponentInstance openGeneric() {
    require(OSARegisterComponent('fake', "Fake", Language::calls(), nullptr) == noErr);
    return OpenDefaultComponent(kOSAComponentType, kOSAGenericScriptingComponentSubtype);
}

/// What was loaded is stored to the same, but for the line before it.
void storeAgain(ComponentInstance generic, OSAID id, osa::ByteSpan body) {
    AEDesc stored;
    require(OSAStore(generic, id, typeOSAGenericStorage, 0, &stored) == noErr);
    const std::string bytes = osa::test::bytesOf(stored);
    AEDisposeDesc(&stored);
    require(bytes.size() % 2 == 0);
    const auto again = osa::parseStoredScript(osa::asBytes(bytes));
    // a body that begins like the line loses it
    if (!osa::asText(body).starts_with("#!"))
        require(again && osa::asText(again->body) == osa::asText(body));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ComponentInstance generic = openGeneric();
    AEDesc desc;
    require(AECreateDesc(typeOSAGenericStorage, data, static_cast<Size>(size), &desc) == noErr);
    const auto script =
        osa::parseStoredScript(osa::ByteSpan(reinterpret_cast<const std::byte*>(data), size));
    OSType subType = 0;
    require(OSAGetScriptingComponentFromStored(generic, &desc, &subType) == script.status());
    OSAID id = 0;
    const OSAError status = OSALoad(generic, &desc, 0, &id);
    require((id != 0) == (status == noErr));
    if (script && script->subType == 'fake') require(status == noErr);
    if (!script) require(status == script.status());
    if (status == noErr && script->subType == 'fake') storeAgain(generic, id, script->body);
    if (id != 0) require(OSADispose(generic, id) == noErr);
    AEDisposeDesc(&desc);
    return 0;
}
