// Realms and what scripts find in them.
#include "platform/osa/javascript/Host.h"

#include <OSA/ScriptingComponents.h>

#include "platform/osa/javascript/Prelude.h"
#include "platform/osa/javascript/Reduction.h"
#include "platform/osa/javascript/Text.h"
#include "platform/osa/javascript/values/HostObjects.h"

namespace osa::script {
namespace {

constexpr JSClass kGlobal = {
    "global", JSCLASS_GLOBAL_FLAGS, &JS::DefaultGlobalClassOps, nullptr, nullptr, nullptr};
/// Between a script's global object and its parent's.
constexpr JSClass kInherited = {"inherited", 0, nullptr, nullptr, nullptr, nullptr};

/// They and what hangs on them are some 20 KiB each.
constexpr int kManyGlobals = 256;

/// Bytes that compiling takes, and reducing, as measured: for each UTF-16 unit of one long string,
/// and for each token of a source of nothing but `()=>a;` and `a=1;`, which take most.
constexpr std::size_t kCompilingUnit = 8;
constexpr std::size_t kCompilingToken = 100;
constexpr std::size_t kReducingUnit = 16;
constexpr std::size_t kReducingToken = 550;

bool isGlobal(JSObject* object) {
    return JS::GetClass(object) == &kGlobal;
}

/// For the prelude: what kind of object it is given, whatever that says of itself.
bool classOf(JSContext* cx, unsigned count, JS::Value* values) {
    const JS::CallArgs args = JS::CallArgsFromVp(count, values);
    JS::RootedObject object(cx, &args[0].toObject());
    js::ESClass kind = js::ESClass::Other;
    if (!JS::GetBuiltinClass(cx, object, &kind)) return false;
    const char* const name = kind == js::ESClass::Error ? "Error" : JS::GetClass(object)->name;
    JSString* const answer = JS_NewStringCopyZ(cx, name);
    if (answer != nullptr) args.rval().setString(answer);
    return answer != nullptr;
}

}  // namespace

bool isScope(JSObject* object) {
    return object != nullptr && (isGlobal(object) || JS::GetClass(object) == &kInherited);
}

bool Host::setUp() {
    JS::RealmOptions options;
    options.creationOptions().setSharedMemoryAndAtomicsEnabled(false);
    base_ = JS_NewGlobalObject(cx_, &kGlobal, nullptr, JS::FireOnNewGlobalHook, options);
    if (base_ == nullptr) return false;
    JSAutoRealm realm(cx_, base_);
    return JS_InitReflectParse(cx_, base_) && runPrelude();
}

/// The room's own JavaScript, in the realm that is entered.
bool Host::evaluate(const char16_t* expression, JS::MutableHandleValue value) {
    JS::CompileOptions options(cx_);
    options.setFileAndLine("prelude", 1);
    JS::SourceText<char16_t> text;
    return text.init(cx_, expression, std::char_traits<char16_t>::length(expression),
                     JS::SourceOwnership::Borrowed) &&
           JS::Evaluate(cx_, options, text, value);
}

bool Host::runPrelude() {
    JS::RootedValue function(cx_), value(cx_);
    JSFunction* const native = JS_NewFunction(cx_, classOf, 1, 0, "classOf");
    JS::RootedValueArray<1> arguments(cx_);
    if (native == nullptr) return false;
    arguments[0].setObject(*JS_GetFunctionObject(native));
    if (!evaluate(kPrelude, &function) ||
        !JS::Call(cx_, JS::UndefinedHandleValue, function, arguments, &value) || !value.isObject())
        return false;
    prelude_ = &value.toObject();
    return true;
}

bool Host::ask(const char* function, const JS::HandleValueArray& arguments,
               JS::MutableHandleValue answer) {
    JSAutoRealm realm(cx_, base_);
    JS::RootedObject prelude(cx_, prelude_);
    return JS_CallFunctionName(cx_, prelude, function, arguments, answer);
}

bool Host::affordsCompiling(std::u16string_view source) const {
    return memoryBytes_ == 0 ||
           affords(source.size() * kCompilingUnit + countTokens(source) * kCompilingToken);
}

bool Host::affordsReducing(std::u16string_view source) const {
    return memoryBytes_ == 0 ||
           affords(source.size() * kReducingUnit + countTokens(source) * kReducingToken);
}

bool Host::reduce(std::u16string* source) {
    if (!affordsReducing(*source)) return false;
    JSAutoRealm realm(cx_, base_);
    JS::RootedValue function(cx_), answer(cx_);
    JS::RootedValueArray<1> arguments(cx_);
    JSString* const text = toString(cx_, *source);
    if (text == nullptr) return false;
    arguments[0].setString(text);
    if (!evaluate(kReduction, &function) ||
        !JS::Call(cx_, JS::UndefinedHandleValue, function, arguments, &answer))
        return false;
    JS::RootedString reduced(cx_, answer.toString());
    return toText(cx_, reduced, source);
}

/// What scripts can hold is of their own realm, from where there is no way into the room's.
bool Host::furnish() {
    JS::RootedValue function(cx_), ignored(cx_);
    JSFunction* const native = js::NewFunctionWithReserved(cx_, onLog, 0, 0, "log");
    JS::RootedValueArray<1> arguments(cx_);
    if (native == nullptr) return false;
    arguments[0].setObject(*JS_GetFunctionObject(native));
    js::SetFunctionNativeReserved(&arguments[0].toObject(), 0, JS::PrivateValue(this));
    return evaluate(kFurniture, &function) &&
           JS::Call(cx_, JS::UndefinedHandleValue, function, arguments, &ignored);
}

bool Host::onLog(JSContext* cx, unsigned count, JS::Value* values) {
    const JS::CallArgs args = JS::CallArgsFromVp(count, values);
    const JS::Value host = js::GetFunctionNativeReserved(&args.callee(), 0);
    args.rval().setUndefined();
    JSAutoRealm realm(cx, static_cast<Host*>(host.toPrivate())->base_);
    return static_cast<Host*>(host.toPrivate())->log(args);
}

bool Host::log(const JS::CallArgs& args) {
    OSALogProcPtr proc = nullptr;
    void* refCon = nullptr;
    OSAGetLogProc(&proc, &refCon);
    if (proc == nullptr) return true;
    JS::RootedValueArray<2> arguments(cx_);
    JSObject* const values = JS::NewArrayObject(cx_, JS::HandleValueArray(args));
    if (values == nullptr) return false;
    arguments[0].setObject(*values);
    arguments[1].setNumber(affordedText());
    JS::RootedValue line(cx_);
    if (!ask("line", arguments, &line)) return false;
    if (!line.isString()) {
        JS_ReportErrorASCII(cx_, "a line that takes more than there is memory");
        return false;
    }
    JS::RootedString text(cx_, line.toString());
    const JS::UniqueChars utf8 = JS_EncodeStringToUTF8(cx_, text);
    if (utf8 == nullptr) return false;
    try {
        proc(utf8.get(), refCon);
        return true;
    } catch (...) {
        // not through the engine's frames
        JS_ReportOutOfMemory(cx_);
        return false;
    }
}

JSObject* Host::heldPrototype(bool file) {
    JS::RootedObject global(cx_, JS::CurrentGlobalOrNull(cx_));
    const std::uint32_t slot = file ? 0 : 1;
    const JS::Value known = JS::GetReservedSlot(global, slot);
    if (known.isObject()) return &known.toObject();
    JSObject* const made = file ? newFilePrototype(cx_) : newDescriptorPrototype(cx_);
    if (made != nullptr) JS::SetReservedSlot(global, slot, JS::ObjectValue(*made));
    return made;
}

JSObject* Host::newGlobal(bool withoutSource) {
    JS::RealmOptions options;
    options.creationOptions().setExistingCompartment(base_).setSharedMemoryAndAtomicsEnabled(false);
    options.behaviors().setDiscardSource(withoutSource);
    JS::RootedObject global(
        cx_, JS_NewGlobalObject(cx_, &kGlobal, nullptr, JS::FireOnNewGlobalHook, options));
    if (global == nullptr) return nullptr;
    ++globals_;
    JSAutoRealm realm(cx_, global);
    return furnish() ? global.get() : nullptr;
}

void Host::tidy() {
    if (globals_ < kManyGlobals) return;
    globals_ = 0;
    JS_GC(cx_);
}

bool Host::inherit(JS::HandleObject global, JS::HandleObject parent) {
    JSAutoRealm realm(cx_, global);
    JS::RootedObject above(cx_);
    if (parent == nullptr) {
        above = JS::GetRealmObjectPrototype(cx_);
        return above != nullptr && JS_SetPrototype(cx_, global, above);
    }
    above = JS_NewObjectWithGivenProto(cx_, &kInherited, parent);
    if (above == nullptr) return false;
    std::vector<std::u16string> lexicals;
    JS::RootedObject declarations(cx_,
                                  isGlobal(parent) ? JS_GlobalLexicalEnvironment(parent) : nullptr);
    if (declarations != nullptr && !appendNames(cx_, declarations, &lexicals)) return false;
    JS::RootedValue value(cx_);
    for (const std::u16string& name : lexicals) {
        bool found = false;
        if (!lookUp(cx_, parent, name, &found, &value)) return false;
        if (found &&
            !JS_DefineUCProperty(cx_, above, name.data(), name.size(), value, JSPROP_ENUMERATE))
            return false;
    }
    return JS_SetPrototype(cx_, global, above);
}

bool appendNames(JSContext* cx, JS::HandleObject object, std::vector<std::u16string>* names) {
    JS::Rooted<JS::IdVector> ids(cx, JS::IdVector(cx));
    if (!JS_Enumerate(cx, object, &ids)) return false;
    JS::RootedValue value(cx);
    for (std::size_t i = 0; i < ids.length(); ++i) {
        if (!JS_IdToValue(cx, ids[i], &value)) return false;
        JS::RootedString name(cx, JS::ToString(cx, value));
        if (name == nullptr || !toText(cx, name, &names->emplace_back())) return false;
    }
    return true;
}

bool lookUp(JSContext* cx, JS::HandleObject scope, std::u16string_view name, bool* found,
            JS::MutableHandleValue value) {
    *found = false;
    JS::RootedString string(cx, toString(cx, name));
    JS::RootedId id(cx);
    if (string == nullptr || !JS_StringToId(cx, string, &id)) return false;
    JSAutoRealm realm(cx, scope);
    if (isGlobal(scope)) {
        JS::RootedObject declarations(cx, JS_GlobalLexicalEnvironment(scope));
        if (!JS_HasOwnPropertyById(cx, declarations, id, found)) return false;
        if (*found && !JS_GetPropertyById(cx, declarations, id, value)) return false;
        // What is declared further down than the script came has no value that may be given out.
        if (*found && value.isMagic()) {
            value.setUndefined();
            *found = false;
            return true;
        }
        if (*found) return true;
    }
    JS::Rooted<mozilla::Maybe<JS::PropertyDescriptor>> property(cx);
    if (!JS_GetOwnPropertyDescriptorById(cx, scope, id, &property)) return false;
    // What the language and the room put there is not enumerable.
    if (property.isNothing() || !property->enumerable()) return true;
    *found = true;
    return JS_GetPropertyById(cx, scope, id, value);
}

}  // namespace osa::script
