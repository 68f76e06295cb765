// Compiled scripts.
#include "platform/osa/javascript/Script.h"

#include <CoreServices/MacErrors.h>

#include "platform/osa/javascript/Text.h"

namespace osa::script {
namespace {

bool isPlain(const JS::PropertyDescriptor& property) {
    return property.isDataDescriptor() && !property.value().isMagic() &&
           !(property.value().isObject() && JS::IsCallable(&property.value().toObject()));
}

}  // namespace

Script::Script(Machine& machine, Host& host, StoredSource source)
    : machine_(machine),
      host_(host),
      cx_(host.context()),
      text_(std::move(source.text)),
      runOnly_(source.runOnly),
      global_(cx_),
      code_(cx_) {}

/// The engine is not interrupted while it compiles, so what would take too much is not begun.
JSScript* Script::compiled(const SourceText& text) {
    if (!host_.affordsCompiling(text.text)) return nullptr;
    JSAutoRealm realm(cx_, global_);
    JS::CompileOptions options(cx_);
    options.setFileAndLine(text.file.c_str(), 1);
    JS::SourceText<char16_t> source;
    if (!source.init(cx_, text.text.data(), text.text.size(), JS::SourceOwnership::Borrowed))
        return nullptr;
    return JS::Compile(cx_, options, source);
}

bool Script::compile() {
    global_ = host_.newGlobal(runOnly_);
    if (global_ == nullptr) return false;
    code_ = compiled(text_);
    return code_ != nullptr;
}

/// As they are, without asking a getter. What `to` has declared itself only gets the value, and
/// stays when that is a function.
bool Script::carryOver(JS::HandleObject from, JS::HandleObject to) {
    JS::Rooted<JS::IdVector> ids(cx_, JS::IdVector(cx_));
    JS::RootedId id(cx_);
    JS::Rooted<mozilla::Maybe<JS::PropertyDescriptor>> property(cx_), own(cx_);
    JS::Rooted<JS::PropertyDescriptor> known(cx_);
    JS::RootedValue value(cx_);
    {
        JSAutoRealm realm(cx_, from);
        if (!JS_Enumerate(cx_, from, &ids)) return false;
    }
    for (std::size_t i = 0; i < ids.length(); ++i) {
        id = ids[i];
        JSAutoRealm realm(cx_, to);
        if (!JS_GetOwnPropertyDescriptorById(cx_, from, id, &property) ||
            !JS_GetOwnPropertyDescriptorById(cx_, to, id, &own))
            return false;
        if (property.isNothing()) continue;
        if (own.isSome() && own->enumerable()) {
            if (!own->isDataDescriptor() || !isPlain(*property)) continue;
            value = property->value();
            if (!JS_SetPropertyById(cx_, to, id, value)) return false;
            continue;
        }
        // Where declarations are, none can be added.
        if (!isScope(to)) continue;
        known = *property;
        // Declarations may come upon it.
        known.setConfigurable(true);
        if (!JS_DefinePropertyById(cx_, to, id, known)) return false;
    }
    return true;
}

/// Names that are declared once for all cannot be declared again in the same global object.
bool Script::renew() {
    std::vector<std::u16string> names;
    JS::RootedObject old(cx_, global_);
    JS::RootedObject declarations(cx_, JS_GlobalLexicalEnvironment(old));
    if (!appendNames(cx_, declarations, &names)) return false;
    if (names.empty()) return true;
    JS::RootedObject fresh(cx_, host_.newGlobal(runOnly_));
    if (fresh == nullptr || !carryOver(old, fresh)) return false;
    global_ = fresh;
    code_ = nullptr;
    return parent_ == nullptr || inherit(parent_);
}

bool Script::settle(JS::MutableHandleValue result) {
    machine_.drain();
    if (machine_.stopped() != noErr) return false;
    if (!result.isObject()) return true;
    JS::RootedObject promise(cx_, &result.toObject());
    if (!JS::IsPromiseObject(promise)) return true;
    const JS::PromiseState state = JS::GetPromiseState(promise);
    if (state == JS::PromiseState::Pending) return true;
    result.set(JS::GetPromiseResult(promise));
    if (state == JS::PromiseState::Fulfilled) return true;
    JS_SetPendingException(cx_, result);
    return false;
}

bool Script::run(JS::MutableHandleValue result) {
    ran_ = false;
    if (begun_ && !renew()) return false;
    begun_ = true;
    if (code_ == nullptr) code_ = compiled(text_);
    if (code_ == nullptr) return false;
    JSAutoRealm realm(cx_, global_);
    JS::RootedScript code(cx_, code_);
    // Who is told a line may ask for what is there by then.
    ran_ = true;
    ran_ = JS_ExecuteScript(cx_, code, result) && settle(result);
    return ran_;
}

bool Script::ensureRun(bool* fresh, JS::MutableHandleValue result) {
    *fresh = !ran_;
    return ran_ || run(result);
}

bool Script::augment(const SourceText& more) {
    JS::RootedScript code(cx_, compiled(more));
    if (code == nullptr) return false;
    JSAutoRealm realm(cx_, global_);
    JS::RootedValue result(cx_);
    if (!JS_ExecuteScript(cx_, code, &result)) return false;
    machine_.drain();
    text_.text += u"\n" + more.text;
    code_ = nullptr;
    return machine_.stopped() == noErr;
}

bool Script::inherit(const Ptr& parent) {
    if (parent == nullptr && parent_ == nullptr) return true;
    JS::RootedObject global(cx_, global_), above(cx_);
    if (parent != nullptr) above = parent->global_;
    if (!host_.inherit(global, above)) return false;
    parent_ = parent;
    return true;
}

bool Script::property(const std::u16string& name, bool* found, JS::MutableHandleValue value) {
    *found = false;
    JS::RootedObject scope(cx_, global_), above(cx_);
    while (isScope(scope)) {
        if (!lookUp(cx_, scope, name, found, value)) return false;
        if (*found) return true;
        JSAutoRealm realm(cx_, scope);
        if (!JS_GetPrototype(cx_, scope, &above)) return false;
        scope = above;
    }
    return true;
}

/// What the script put into `on`.
bool Script::registered(JS::HandleObject global, const std::u16string& event,
                        JS::MutableHandleValue function) {
    function.setUndefined();
    JSAutoRealm realm(cx_, global);
    JS::RootedValue on(cx_);
    if (!JS_GetProperty(cx_, global, "on", &on)) return false;
    if (!on.isObject()) return true;
    JS::RootedObject table(cx_, &on.toObject());
    JS::RootedString name(cx_, toString(cx_, event));
    JS::RootedId id(cx_);
    bool own = false;
    if (name == nullptr || !JS_StringToId(cx_, name, &id) ||
        !JS_HasOwnPropertyById(cx_, table, id, &own))
        return false;
    return !own || JS_GetPropertyById(cx_, table, id, function);
}

bool Script::handler(const Name& name, JS::MutableHandleValue function) {
    if (!name.event.empty()) {
        for (const Script* script = this; script != nullptr; script = script->parent_.get()) {
            JS::RootedObject global(cx_, script->global_);
            if (!registered(global, name.event, function)) return false;
            if (isFunction(function)) return true;
        }
    }
    bool found = false;
    if (!name.text.empty() && !property(name.text, &found, function)) return false;
    if (!found || !isFunction(function)) function.setUndefined();
    return true;
}

bool Script::ownFunction(const std::u16string& name, JS::MutableHandleValue function) {
    JS::RootedObject global(cx_, global_);
    bool found = false;
    if (!lookUp(cx_, global, name, &found, function)) return false;
    if (!found || !isFunction(function)) function.setUndefined();
    return true;
}

bool Script::takeOver(const Script& other) {
    if (!other.begun_) return true;
    JS::RootedValue ignored(cx_);
    if (!inherit(other.parent_) || (other.ran_ && !run(&ignored))) return false;
    JS::RootedObject from(cx_, other.global_), to(cx_, global_);
    if (!carryOver(from, to)) return false;
    if (!other.ran_) return true;
    from = JS_GlobalLexicalEnvironment(from);
    to = JS_GlobalLexicalEnvironment(to);
    return carryOver(from, to);
}

bool Script::call(JS::HandleValue function, const JS::HandleValueArray& arguments,
                  JS::MutableHandleValue result) {
    JSAutoRealm realm(cx_, global_);
    JS::RootedObject self(cx_, global_);
    return JS_CallFunctionValue(cx_, self, function, arguments, result) && settle(result);
}

bool Script::names(bool functions, std::vector<std::u16string>* names) {
    std::vector<std::u16string> all;
    JS::RootedObject global(cx_, global_);
    JS::RootedObject declarations(cx_, JS_GlobalLexicalEnvironment(global));
    JSAutoRealm realm(cx_, global);
    if (!appendNames(cx_, declarations, &all) || !appendNames(cx_, global, &all)) return false;
    JS::RootedValue value(cx_);
    for (const std::u16string& name : all) {
        bool found = false;
        if (!lookUp(cx_, global, name, &found, &value)) return false;
        if (found && isFunction(value) == functions) names->push_back(name);
    }
    return true;
}

}  // namespace osa::script
