// Calls that run scripts and look into them.
#include <CoreServices/MacErrors.h>

#include "platform/base/FourCC.h"
#include "platform/osa/javascript/Calls.h"
#include "platform/osa/javascript/Text.h"
#include "platform/osa/javascript/values/Values.h"

namespace osa::script {
namespace {

OSErr codeOf(const AppleEvent& event, AEKeyword attribute, OSType* code) {
    return AEGetAttributePtr(&event, attribute, typeType, nullptr, code, sizeof *code, nullptr);
}

bool isSubroutine(AEEventClass eventClass, AEEventID eventID) {
    return eventClass == kASAppleScriptSuite && eventID == kASSubroutineEvent;
}

/// One event on its way into one script.
class Delivery {
  public:
    Delivery(Instance& instance, Script& script, const AppleEvent& event)
        : instance_(instance),
          script_(script),
          event_(event),
          cx_(instance.context()),
          arguments_(cx_) {}

    OSAError deliver(JS::MutableHandleValue result) {
        OSErr status = codeOf(event_, keyEventClassAttr, &class_);
        if (status == noErr) status = codeOf(event_, keyEventIDAttr, &id_);
        Name name;
        if (status == noErr) status = nameHandler(&name);
        if (status != noErr) return status;
        bool fresh = false;
        JS::RootedValue function(cx_);
        if (!script_.ensureRun(&fresh, result) || !script_.handler(name, &function))
            return errOSAScriptError;
        if (!isFunction(function)) return runItself(fresh, result);
        JSAutoRealm realm(cx_, script_.global());
        status = isSubroutine(class_, id_) ? positional() : labelled();
        if (status != noErr) return status;
        return script_.call(function, arguments_, result) ? noErr : errOSAScriptError;
    }

  private:
    OSErr nameHandler(Name* name) {
        if (!isSubroutine(class_, id_)) {
            *name = eventName(class_, id_);
            return noErr;
        }
        Desc text;
        const OSErr status = AEGetParamDesc(&event_, keyASSubroutineName, typeWildCard, text.out());
        return status == noErr ? plainNameOf(text.desc, name) : status;
    }

    /// The top level is what handles the event "run" when no function does.
    OSAError runItself(bool fresh, JS::MutableHandleValue result) {
        if (class_ != FourCC("aevt") || id_ != FourCC("oapp")) return errAEEventNotHandled;
        return fresh || script_.run(result) ? noErr : errOSAScriptError;
    }

    OSErr append(const AEDesc& desc) {
        JS::RootedValue value(cx_);
        const OSErr status = fromDesc(instance_.host(), desc, &value);
        if (status != noErr) return status;
        return arguments_.append(value) ? OSErr(noErr) : OSErr(memFullErr);
    }

    /// The items of the direct parameter.
    OSErr positional() {
        Desc direct;
        OSErr status = AEGetParamDesc(&event_, keyDirectObject, typeWildCard, direct.out());
        if (status == errAEDescNotFound) return noErr;
        if (status != noErr || direct.desc.descriptorType != typeAEList)
            return status == noErr ? append(direct.desc) : status;
        SInt32 count = 0;
        status = AECountItems(&direct.desc, &count);
        for (SInt32 index = 1; status == noErr && index <= count; ++index) {
            Desc item;
            status = AEGetNthDesc(&direct.desc, index, typeWildCard, nullptr, item.out());
            if (status == noErr) status = append(item.desc);
        }
        return status;
    }

    /// The direct parameter, and the others in an object.
    OSErr labelled() {
        Desc direct, others, record;
        OSErr status = AEGetParamDesc(&event_, keyDirectObject, typeWildCard, direct.out());
        if (status == noErr) status = append(direct.desc);
        if (status == errAEDescNotFound)
            status = arguments_.append(JS::UndefinedValue()) ? OSErr(noErr) : OSErr(memFullErr);
        if (status == noErr) status = AECoerceDesc(&event_, typeAERecord, others.out());
        if (status == noErr) AEDeleteParam(&others.desc, keyDirectObject);
        return status == noErr ? append(others.desc) : status;
    }

    Instance& instance_;
    Script& script_;
    const AppleEvent& event_;
    JSContext* const cx_;
    JS::RootedValueVector arguments_;
    AEEventClass class_ = 0;
    AEEventID id_ = 0;
};

/// The top level, then the script's own function `run`, if it has one.
bool runWhole(Script& script, JS::MutableHandleValue result) {
    JS::RootedValue function(script.context());
    if (!script.run(result) || !script.ownFunction(u"run", &function)) return false;
    return !isFunction(function) || script.call(function, JS::HandleValueArray::empty(), result);
}

/// Finds the script and sees to it that it was run, so that what it declares is there.
OSAError ready(Instance& instance, OSAID id, Script::Ptr* script) {
    const Item* const item = instance.findScript(id);
    if (item == nullptr) return errOSAInvalidID;
    // Held, because what runs may dispose of it by way of a coercion.
    *script = item->script;
    instance.within(*script);
    bool fresh = false;
    JS::RootedValue result(instance.context());
    return (*script)->ensureRun(&fresh, &result) ? noErr : errOSAScriptError;
}

/// The same, to look for what `desc` names; the name is looked at before anything runs.
OSAError readyFor(Instance& instance, OSAID id, const AEDesc& desc, bool isHandler, Name* name,
                  Script::Ptr* script) {
    if (instance.findScript(id) == nullptr) return errOSAInvalidID;
    const OSErr status = nameOf(desc, isHandler, name);
    return status == noErr ? ready(instance, id, script) : status;
}

OSAError getNames(Instance& instance, OSAID id, bool functions, AEDescList* result) {
    Script::Ptr script;
    if (const OSAError status = ready(instance, id, &script); status != noErr) return status;
    std::vector<std::u16string> names;
    if (!script->names(functions, &names)) return errOSAScriptError;
    Desc list;
    OSErr status = AECreateList(nullptr, 0, false, list.out());
    for (const std::u16string& name : names) {
        const auto size = static_cast<Size>(name.size() * sizeof(char16_t));
        if (status == noErr) status = AEPutPtr(&list.desc, 0, typeUnicodeText, name.data(), size);
    }
    if (status == noErr) list.release(result);
    return status;
}

}  // namespace

bool handlesOpening(Script& script) {
    JS::RootedValue result(script.context());
    bool fresh = false;
    const bool found = script.ensureRun(&fresh, &result) &&
                       script.handler(eventName(FourCC("aevt"), FourCC("odoc")), &result) &&
                       isFunction(result);
    JS_ClearPendingException(script.context());
    return found;
}

OSAError execute(Instance& instance, OSAID id, OSAID context, SInt32, OSAID* resultID) {
    Item* const item = instance.find(id);
    Item* const parent = context == kOSANullScript ? nullptr : instance.findScript(context);
    if (item == nullptr || item->kind == Kind::value) return errOSAInvalidID;
    if (parent == nullptr && context != kOSANullScript) return errOSAInvalidID;
    // Held, because what runs may dispose of it by way of a coercion.
    const Script::Ptr script = item->script;
    instance.within(script);
    JS::RootedValue result(instance.context());
    if (item->kind == Kind::handler) {
        JS::RootedValue function(instance.context(), item->value);
        if (!script->call(function, JS::HandleValueArray::empty(), &result))
            return errOSAScriptError;
    } else if ((parent != item && !script->inherit(parent == nullptr ? nullptr : parent->script)) ||
               !runWhole(*script, &result)) {
        return errOSAScriptError;
    }
    *resultID = instance.addResult(result);
    return noErr;
}

OSAError executeEvent(Instance& instance, const AppleEvent* event, OSAID context, SInt32,
                      OSAID* resultID) {
    const Item* const item = instance.findScript(context);
    if (item == nullptr) return errOSAInvalidID;
    const Script::Ptr script = item->script;
    instance.within(script);
    JS::RootedValue result(instance.context());
    const OSAError status = Delivery(instance, *script, *event).deliver(&result);
    if (status == noErr) *resultID = instance.addResult(result);
    return status;
}

OSAError getHandler(Instance& instance, SInt32, OSAID id, const AEDesc* desc, OSAID* resultID) {
    Name name;
    Script::Ptr script;
    const OSAError status = readyFor(instance, id, *desc, true, &name, &script);
    if (status != noErr) return status;
    JS::RootedValue function(instance.context());
    if (!script->handler(name, &function)) return errOSAScriptError;
    if (!isFunction(function)) return errOSAInvalidAccess;
    auto handler = std::make_unique<Item>(instance.context());
    handler->kind = Kind::handler;
    handler->script = script;
    handler->value = function;
    *resultID = instance.add(std::move(handler));
    return noErr;
}

OSAError getProperty(Instance& instance, SInt32, OSAID id, const AEDesc* desc, OSAID* resultID) {
    Name name;
    Script::Ptr script;
    const OSAError status = readyFor(instance, id, *desc, false, &name, &script);
    if (status != noErr) return status;
    JS::RootedValue value(instance.context());
    bool found = false;
    if (!script->property(name.text, &found, &value)) return errOSAScriptError;
    if (!found || isFunction(value)) return errOSAInvalidAccess;
    *resultID = instance.addValue(value);
    return noErr;
}

OSAError getPropertyNames(Instance& instance, SInt32, OSAID id, AEDescList* result) {
    return getNames(instance, id, false, result);
}

OSAError getHandlerNames(Instance& instance, SInt32, OSAID id, AEDescList* result) {
    return getNames(instance, id, true, result);
}

}  // namespace osa::script
