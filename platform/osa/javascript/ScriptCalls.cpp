// Calls that make, keep and tell scripts and values.
#include <CoreServices/MacErrors.h>

#include "platform/osa/javascript/Calls.h"
#include "platform/osa/javascript/Text.h"
#include "platform/osa/javascript/values/Values.h"

namespace osa::script {
namespace {

ByteSpan bytesOf(const AEDesc& desc) {
    if (desc.dataHandle == nullptr) return {};
    return {reinterpret_cast<const std::byte*>(*desc.dataHandle),
            static_cast<std::size_t>(AEGetDescDataSize(&desc))};
}

bool isStored(DescType type) {
    return type == typeOSAGenericStorage || type == kJavaScript;
}

OSAID addScript(Instance& instance, Script::Ptr script, bool isContext) {
    auto item = std::make_unique<Item>(instance.context());
    item->kind = Kind::script;
    item->script = std::move(script);
    item->isContext = isContext;
    return instance.add(std::move(item));
}

OSAError augment(Instance& instance, Script::Ptr script, std::u16string source) {
    const auto more = std::make_shared<const SourceText>(std::move(source));
    instance.within(more);
    JS::RootedValue result(instance.context());
    bool fresh = false;
    if (!script->ensureRun(&fresh, &result)) return errOSAScriptError;
    if (script->augment(*more)) return noErr;
    return errOSAScriptError;
}

/// A new script that has what `from` has: its source, and its state when it was run.
OSAError copyScript(Instance& instance, const Item& from, OSAID* id) {
    const Script::Ptr original = from.script;
    const bool isContext = from.isContext;
    const Script::Ptr copy = instance.compile({original->text().text, original->runOnly()});
    if (copy == nullptr) return errOSAScriptError;
    instance.within(copy);
    if (!copy->takeOver(*original)) return errOSAScriptError;
    *id = addScript(instance, copy, isContext);
    return noErr;
}

OSAError displayText(Instance& instance, const Item& item, bool human, std::u16string* text) {
    if (item.kind == Kind::script) {
        *text = item.script->runOnly() ? u"script" : item.script->text().text;
        return noErr;
    }
    JSContext* const cx = instance.context();
    JS::RootedValueArray<3> arguments(cx);
    arguments[0].set(item.value);
    arguments[1].setBoolean(human);
    arguments[2].setNumber(instance.host().affordedText());
    JS::RootedValue answer(cx);
    if (!instance.host().ask("display", arguments, &answer)) return errOSAScriptError;
    if (answer.isNull()) return memFullErr;
    JS::RootedString string(cx, JS::ToString(cx, answer));
    return string != nullptr && toText(cx, string, text) ? noErr : errOSAScriptError;
}

}  // namespace

OSAError load(Instance& instance, const AEDesc* data, SInt32 mode, OSAID* id) {
    if (!isStored(data->descriptorType)) return errOSABadStorageType;
    StoredSource source;
    if (const OSErr status = readStored(bytesOf(*data), &source); status != noErr) return status;
    source.runOnly = source.runOnly || (mode & kOSAModePreventGetSource) != 0;
    Script::Ptr script = instance.compile(std::move(source));
    if (script == nullptr) return errOSAScriptError;
    *id = addScript(instance, std::move(script), false);
    return noErr;
}

OSAError store(Instance& instance, OSAID id, DescType type, SInt32 mode, AEDesc* result) {
    const Item* const item = instance.findScript(id);
    if (item == nullptr) return errOSAInvalidID;
    if (!isStored(type) && type != typeBest && type != typeWildCard) return errOSABadStorageType;
    const bool runOnly = item->script->runOnly() || (mode & kOSAModePreventGetSource) != 0;
    std::u16string text = item->script->text().text;
    if (runOnly && !instance.host().reduce(&text)) return errOSAScriptError;
    const OSErr status = writeStored({std::move(text), runOnly}, result);
    if (status == noErr && type == kJavaScript) result->descriptorType = type;
    return status;
}

OSAError compile(Instance& instance, const AEDesc* source, SInt32 mode, OSAID* id) {
    Item* previous = *id == kOSANullScript ? nullptr : instance.findScript(*id);
    if (previous == nullptr && *id != kOSANullScript) return errOSAInvalidID;
    std::u16string text;
    if (const OSErr status = textOf(*source, &text); status != noErr) return status;
    if (previous != nullptr && (mode & kOSAModeAugmentContext) != 0)
        return augment(instance, previous->script, std::move(text));
    Script::Ptr script =
        instance.compile({std::move(text), (mode & kOSAModePreventGetSource) != 0});
    if (script == nullptr) return errOSAScriptError;
    const bool isContext = (mode & (kOSAModeCompileIntoContext | kOSAModeAugmentContext)) != 0;
    JS::RootedValue result(instance.context());
    if (isContext) instance.within(script);
    if (isContext && !script->run(&result)) return errOSAScriptError;
    // What ran may have disposed of it.
    if (previous != nullptr && (previous = instance.findScript(*id)) == nullptr)
        return errOSAInvalidID;
    if (previous == nullptr) {
        *id = addScript(instance, std::move(script), isContext);
        return noErr;
    }
    previous->script = std::move(script);
    previous->isContext = isContext;
    return noErr;
}

OSAError copyID(Instance& instance, OSAID from, OSAID* to) {
    const Item* const item = instance.find(from);
    if (item == nullptr) return errOSAInvalidID;
    if (item->kind == Kind::script) return copyScript(instance, *item, to);
    auto copy = std::make_unique<Item>(instance.context());
    copy->kind = item->kind;
    copy->script = item->script;
    copy->value = item->value;
    *to = instance.add(std::move(copy));
    return noErr;
}

OSAError getSource(Instance& instance, OSAID id, DescType type, AEDesc* result) {
    const Item* const item = instance.find(id);
    if (item == nullptr || item->kind == Kind::value) return errOSAInvalidID;
    if (item->script->runOnly()) return errOSASourceNotAvailable;
    if (item->kind == Kind::script) return answerText(item->script->text().text, type, result);
    std::u16string text;
    const OSAError status = displayText(instance, *item, false, &text);
    return status == noErr ? answerText(text, type, result) : status;
}

OSAError getScriptInfo(Instance& instance, OSAID id, OSType selector, SInt32* result) {
    const Item* const item = instance.find(id);
    if (item == nullptr) return errOSAInvalidID;
    const bool isValue = item->kind == Kind::value;
    switch (selector) {
        case kOSAScriptIsModified:
            *result = 0;
            return noErr;
        case kOSAScriptIsTypeCompiledScript:
            *result = !isValue && !item->isContext;
            return noErr;
        case kOSAScriptIsTypeScriptValue:
            *result = isValue;
            return noErr;
        case kOSAScriptIsTypeScriptContext:
            *result = item->isContext;
            return noErr;
        case kOSACanGetSource:
            *result = !isValue && !item->script->runOnly();
            return noErr;
        case kASHasOpenHandler:
            if (const Script::Ptr script = item->kind == Kind::script ? item->script : nullptr)
                *result = handlesOpening(*script);
            else
                *result = 0;
            return noErr;
        case kOSAScriptBestType:
            *result = static_cast<SInt32>(typeOSAGenericStorage);
            if (isValue)
                *result = static_cast<SInt32>(naturalType(instance.context(), item->value));
            return noErr;
        default:
            return errOSABadSelector;
    }
}

OSAError display(Instance& instance, OSAID id, DescType type, SInt32 mode, AEDesc* result) {
    const Item* const item = instance.find(id);
    if (item == nullptr) return errOSAInvalidID;
    std::u16string text;
    const bool human = (mode & kOSAModeDisplayForHumans) != 0;
    const OSAError status = displayText(instance, *item, human, &text);
    return status == noErr ? answerText(text, type, result) : status;
}

OSAError coerceFromDesc(Instance& instance, const AEDesc* desc, SInt32 mode, OSAID* id) {
    if (isStored(desc->descriptorType)) return load(instance, desc, mode, id);
    JS::RootedValue value(instance.context());
    const OSErr status = fromDesc(instance.host(), *desc, &value);
    if (status == noErr) *id = instance.addValue(value);
    return status;
}

OSAError coerceToDesc(Instance& instance, OSAID id, DescType type, SInt32 mode, AEDesc* result) {
    const Item* const item = instance.find(id);
    if (item == nullptr) return errOSAInvalidID;
    const bool natural = type == typeWildCard || type == typeBest;
    if (item->kind == Kind::script)
        return natural || isStored(type) ? store(instance, id, type, mode, result)
                                         : OSAError{errAECoercionFail};
    if (item->kind == Kind::handler) return errAECoercionFail;
    JSContext* const cx = instance.context();
    JS::RootedValue value(cx, item->value);
    Desc desc;
    const OSErr status = toDesc(instance.host(), value, desc.out());
    if (status != noErr) return status;
    if (!natural) return AECoerceDesc(&desc.desc, type, result);
    desc.release(result);
    return noErr;
}

}  // namespace osa::script
