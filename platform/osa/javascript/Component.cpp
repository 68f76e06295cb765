// The component's table: what its shared library exports.
#include <CoreServices/MacErrors.h>
#include <OSA/ScriptingComponents.h>

#include <functional>
#include <new>

#include "platform/osa/javascript/Calls.h"

namespace osa::script {
namespace {

Instance& instanceOf(void* storage) {
    return *static_cast<Instance*>(storage);
}

/// An entry of the table from a call.
template <auto Call>
struct Entry;
template <typename... Arguments, OSAError (*Call)(Instance&, Arguments...)>
struct Entry<Call> {
    static OSAError enter(void* storage, Arguments... arguments) {
        Instance& instance = instanceOf(storage);
        const auto work = [&]() -> OSAError { return Call(instance, arguments...); };
        return instance.perform(std::cref(work));
    }
};

OSAError open(ComponentInstance, void** storage) {
    try {
        *storage = Instance::make().release();
    } catch (const std::bad_alloc&) {
        *storage = nullptr;
    }
    return *storage == nullptr ? memFullErr : noErr;
}

void close(void* storage) {
    delete static_cast<Instance*>(storage);
}

/// The last error stays as it is, so this is no work for the engine.
OSAError scriptError(void* storage, OSType selector, DescType type, AEDesc* result) {
    return instanceOf(storage).error().answer(selector, type, result);
}

OSAError dispose(void* storage, OSAID id) {
    return instanceOf(storage).dispose(id);
}

void interrupt(void* storage) {
    instanceOf(storage).interrupt();
}

constexpr OSAComponentCalls kCalls = {
    .size = sizeof(OSAComponentCalls),
    .open = open,
    .close = close,
    .load = Entry<load>::enter,
    .store = Entry<store>::enter,
    .loadFile = nullptr,
    .storeFile = nullptr,
    .execute = Entry<execute>::enter,
    .executeEvent = Entry<executeEvent>::enter,
    .display = Entry<display>::enter,
    .scriptError = scriptError,
    .dispose = dispose,
    .getScriptInfo = Entry<getScriptInfo>::enter,
    .compile = Entry<compile>::enter,
    .copyID = Entry<copyID>::enter,
    .getSource = Entry<getSource>::enter,
    .coerceFromDesc = Entry<coerceFromDesc>::enter,
    .coerceToDesc = Entry<coerceToDesc>::enter,
    .getHandler = Entry<getHandler>::enter,
    .getProperty = Entry<getProperty>::enter,
    .getPropertyNames = Entry<getPropertyNames>::enter,
    .getHandlerNames = Entry<getHandlerNames>::enter,
    .interrupt = interrupt,
};

}  // namespace
}  // namespace osa::script

extern "C" __attribute__((visibility("default"))) const OSAComponentCalls* OSAComponent() {
    return &osa::script::kCalls;
}
