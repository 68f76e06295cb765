// The generic scripting component's table.
#include <CoreServices/MacErrors.h>

#include <memory>
#include <new>

#include "platform/osa/Components.h"
#include "platform/osa/GenericComponent.h"

namespace osa {
namespace {

GenericComponent& self(void* storage) {
    return *static_cast<GenericComponent*>(storage);
}

/// Has `call` make a number in the instance, and gives the generic one of it.
template <typename Call>
OSAError give(GenericComponent& generic, ComponentInstance instance, OSAID* result, Call call) {
    OSAID made = kOSANullScript;
    const OSAError status =
        generic.run(instance, [&](ComponentInstance to) { return call(to, &made); });
    if (status != noErr) return status;
    try {
        *result = generic.ids().add({instance, made});
        return noErr;
    } catch (const std::bad_alloc&) {
        OSADispose(instance, made);
        return memFullErr;
    }
}

/// Passes a call on `id` to its component.
template <typename Call>
OSAError pass(void* storage, OSAID id, Call call) {
    const auto real = self(storage).real(id);
    if (!real) return real.status();
    return self(storage).run(real->instance,
                             [&](ComponentInstance to) { return call(to, real->id); });
}

/// The same; kOSANullScript goes to the default component.
template <typename Call>
OSAError passOrDefault(void* storage, OSAID id, Call call) {
    const auto real = self(storage).realOrDefault(id);
    if (!real) return real.status();
    return self(storage).run(real->instance,
                             [&](ComponentInstance to) { return call(to, real->id); });
}

/// The same for one that makes a number.
template <typename Call>
OSAError passAndGive(void* storage, OSAID id, OSAID* result, Call call) {
    const auto real = self(storage).realOrDefault(id);
    if (!real) return real.status();
    return give(self(storage), real->instance, result,
                [&](ComponentInstance to, OSAID* made) { return call(to, real->id, made); });
}

OSAError open(ComponentInstance, void** storage) {
    *storage = new GenericComponent;
    return noErr;
}

void close(void* storage) {
    delete static_cast<GenericComponent*>(storage);
}

OSAError load(void* storage, const AEDesc* stored, SInt32 mode, OSAID* result) {
    const auto instance = self(storage).instanceFor(*stored);
    if (!instance) return instance.status();
    return give(self(storage), *instance, result,
                [&](ComponentInstance to, OSAID* made) { return OSALoad(to, stored, mode, made); });
}

OSAError store(void* storage, OSAID id, DescType type, SInt32 mode, AEDesc* result) {
    return pass(storage, id, [&](ComponentInstance to, OSAID real) {
        return OSAStore(to, real, type, mode, result);
    });
}

OSAError execute(void* storage, OSAID script, OSAID context, SInt32 mode, OSAID* result) {
    RealID realContext;
    if (context != kOSANullScript) {
        const auto real = self(storage).real(context);
        if (!real) return real.status();
        realContext = *real;
    }
    const auto real = self(storage).real(script);
    if (!real) return real.status();
    if (context != kOSANullScript && realContext.instance != real->instance)
        return errOSAComponentMismatch;
    return give(self(storage), real->instance, result, [&](ComponentInstance to, OSAID* made) {
        return OSAExecute(to, real->id, realContext.id, mode, made);
    });
}

OSAError executeEvent(void* storage, const AppleEvent* event, OSAID context, SInt32 mode,
                      OSAID* result) {
    return passAndGive(storage, context, result,
                       [&](ComponentInstance to, OSAID real, OSAID* made) {
                           return OSAExecuteEvent(to, event, real, mode, made);
                       });
}

OSAError display(void* storage, OSAID id, DescType type, SInt32 mode, AEDesc* result) {
    return pass(storage, id, [&](ComponentInstance to, OSAID real) {
        return OSADisplay(to, real, type, mode, result);
    });
}

OSAError scriptError(void* storage, OSType selector, DescType type, AEDesc* result) {
    const ComponentInstance failed = self(storage).failed();
    return failed == nullptr ? OSAError{errAEDescNotFound}
                             : OSAScriptError(failed, selector, type, result);
}

OSAError dispose(void* storage, OSAID id) {
    const OSAError status = pass(storage, id, OSADispose);
    if (status == noErr) self(storage).ids().remove(id);
    return status;
}

OSAError getScriptInfo(void* storage, OSAID id, OSType selector, SInt32* result) {
    return pass(storage, id, [&](ComponentInstance to, OSAID real) {
        return OSAGetScriptInfo(to, real, selector, result);
    });
}

OSAError compile(void* storage, const AEDesc* source, SInt32 mode, OSAID* script) {
    const OSAID previous = *script;
    const auto compileAs = [&](ComponentInstance to, OSAID real, OSAID* made) {
        *made = real;
        return OSACompile(to, source, mode, made);
    };
    if (previous == kOSANullScript) return passAndGive(storage, previous, script, compileAs);
    const auto real = self(storage).real(previous);
    if (!real) return real.status();
    OSAID made = kOSANullScript;
    const OSAError status = self(storage).run(
        real->instance, [&](ComponentInstance to) { return compileAs(to, real->id, &made); });
    if (status == noErr) self(storage).ids().replace(previous, {real->instance, made});
    return status;
}

OSAError copyID(void* storage, OSAID id, OSAID* result) {
    return id == kOSANullScript ? OSAError{errOSAInvalidID}
                                : passAndGive(storage, id, result, OSACopyID);
}

OSAError getSource(void* storage, OSAID id, DescType type, AEDesc* result) {
    return pass(storage, id, [&](ComponentInstance to, OSAID real) {
        return OSAGetSource(to, real, type, result);
    });
}

OSAError coerceFromDesc(void* storage, const AEDesc* value, SInt32 mode, OSAID* result) {
    return passAndGive(storage, kOSANullScript, result,
                       [&](ComponentInstance to, OSAID, OSAID* made) {
                           return OSACoerceFromDesc(to, value, mode, made);
                       });
}

OSAError coerceToDesc(void* storage, OSAID id, DescType type, SInt32 mode, AEDesc* result) {
    return pass(storage, id, [&](ComponentInstance to, OSAID real) {
        return OSACoerceToDesc(to, real, type, mode, result);
    });
}

OSAError getHandler(void* storage, SInt32 mode, OSAID context, const AEDesc* name, OSAID* result) {
    return passAndGive(storage, context, result,
                       [&](ComponentInstance to, OSAID real, OSAID* made) {
                           return OSAGetHandler(to, mode, real, name, made);
                       });
}

OSAError getProperty(void* storage, SInt32 mode, OSAID context, const AEDesc* name, OSAID* result) {
    return passAndGive(storage, context, result,
                       [&](ComponentInstance to, OSAID real, OSAID* made) {
                           return OSAGetProperty(to, mode, real, name, made);
                       });
}

OSAError getPropertyNames(void* storage, SInt32 mode, OSAID context, AEDescList* result) {
    return passOrDefault(storage, context, [&](ComponentInstance to, OSAID real) {
        return OSAGetPropertyNames(to, mode, real, result);
    });
}

OSAError getHandlerNames(void* storage, SInt32 mode, OSAID context, AEDescList* result) {
    return passOrDefault(storage, context, [&](ComponentInstance to, OSAID real) {
        return OSAGetHandlerNames(to, mode, real, result);
    });
}

void interrupt(void* storage) {
    self(storage).interrupt();
}

}  // namespace

const OSAComponentCalls& genericCalls() {
    static constexpr OSAComponentCalls calls{
        .size = sizeof calls,
        .open = open,
        .close = close,
        .load = load,
        .store = store,
        .loadFile = nullptr,
        .storeFile = nullptr,
        .execute = execute,
        .executeEvent = executeEvent,
        .display = display,
        .scriptError = scriptError,
        .dispose = dispose,
        .getScriptInfo = getScriptInfo,
        .compile = compile,
        .copyID = copyID,
        .getSource = getSource,
        .coerceFromDesc = coerceFromDesc,
        .coerceToDesc = coerceToDesc,
        .getHandler = getHandler,
        .getProperty = getProperty,
        .getPropertyNames = getPropertyNames,
        .getHandlerNames = getHandlerNames,
        .interrupt = interrupt,
    };
    return calls;
}

}  // namespace osa
