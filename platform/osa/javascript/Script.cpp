// Compiled scripts.
#include "platform/osa/javascript/Script.h"

#include <CoreServices/MacErrors.h>

#include "platform/osa/javascript/Text.h"

namespace osa::script {
namespace {

bool isFunction(JS::HandleValue value) {
    return value.isObject() && JS::IsCallable(&value.toObject());
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

JSScript* Script::compiled(const SourceText& text) {
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

bool Script::declarations(std::vector<std::u16string>* names, bool* known) {
    JSAutoRealm realm(cx_, host_.base());
    JS::RootedValueArray<1> arguments(cx_);
    JSString* const source = toString(cx_, text_.text);
    if (source == nullptr) return false;
    arguments[0].setString(source);
    JS::RootedValue answer(cx_), name(cx_);
    if (!host_.ask("lexicals", arguments, &answer)) return false;
    *known = answer.isObject();
    if (!*known) return true;
    JS::RootedObject list(cx_, &answer.toObject());
    std::uint32_t count = 0;
    if (!JS::GetArrayLength(cx_, list, &count)) return false;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!JS_GetElement(cx_, list, i, &name)) return false;
        if (!name.isString()) return false;
        JS::RootedString string(cx_, name.toString());
        if (!toText(cx_, string, &names->emplace_back())) return false;
    }
    return true;
}

/// As they are, without asking a getter.
bool Script::carryOver(JS::HandleObject from, JS::HandleObject to) {
    JS::Rooted<JS::IdVector> ids(cx_, JS::IdVector(cx_));
    JS::RootedId id(cx_);
    JS::Rooted<mozilla::Maybe<JS::PropertyDescriptor>> property(cx_);
    JS::Rooted<JS::PropertyDescriptor> known(cx_);
    {
        JSAutoRealm realm(cx_, from);
        if (!JS_Enumerate(cx_, from, &ids)) return false;
    }
    for (std::size_t i = 0; i < ids.length(); ++i) {
        id = ids[i];
        JSAutoRealm realm(cx_, to);
        if (!JS_GetOwnPropertyDescriptorById(cx_, from, id, &property)) return false;
        if (property.isNothing()) continue;
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
    bool known = false;
    if (!declarations(&names, &known)) return false;
    if (known && names.empty()) return true;
    JS::RootedObject old(cx_, global_);
    JS::RootedObject fresh(cx_, host_.newGlobal(runOnly_));
    if (fresh == nullptr || !carryOver(old, fresh)) return false;
    global_ = fresh;
    code_ = nullptr;
    return parent_ == nullptr || inherit(parent_);
}

bool Script::run(JS::MutableHandleValue result) {
    if (ran_ && !renew()) return false;
    ran_ = true;
    if (code_ == nullptr) code_ = compiled(text_);
    if (code_ == nullptr) return false;
    JSAutoRealm realm(cx_, global_);
    JS::RootedScript code(cx_, code_);
    if (!JS_ExecuteScript(cx_, code, result)) return false;
    machine_.drain();
    return machine_.stopped() == noErr;
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
    std::vector<std::u16string> names;
    bool known = false;
    JS::RootedObject above(cx_);
    if (parent == nullptr && parent_ == nullptr) return true;
    if (parent != nullptr) {
        if (!parent->declarations(&names, &known)) return false;
        above = parent->global_;
    }
    JS::RootedObject global(cx_, global_);
    if (!host_.inherit(global, above, names)) return false;
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
    if (!other.ran_) return true;
    JS::RootedObject from(cx_, other.global_), to(cx_, global_);
    return carryOver(from, to);
}

bool Script::call(JS::HandleValue function, const JS::HandleValueArray& arguments,
                  JS::MutableHandleValue result) {
    JSAutoRealm realm(cx_, global_);
    JS::RootedObject self(cx_, global_);
    if (!JS_CallFunctionValue(cx_, self, function, arguments, result)) return false;
    machine_.drain();
    return machine_.stopped() == noErr;
}

bool Script::names(bool functions, std::vector<std::u16string>* names) {
    std::vector<std::u16string> all;
    bool known = false;
    if (!declarations(&all, &known)) return false;
    JS::RootedObject global(cx_, global_);
    JSAutoRealm realm(cx_, global);
    JS::Rooted<JS::IdVector> ids(cx_, JS::IdVector(cx_));
    if (!JS_Enumerate(cx_, global, &ids)) return false;
    JS::RootedValue value(cx_);
    for (std::size_t i = 0; i < ids.length(); ++i) {
        if (!JS_IdToValue(cx_, ids[i], &value)) return false;
        JS::RootedString name(cx_, JS::ToString(cx_, value));
        if (name == nullptr || !toText(cx_, name, &all.emplace_back())) return false;
    }
    for (const std::u16string& name : all) {
        bool found = false;
        if (!lookUp(cx_, global, name, &found, &value)) return false;
        if (found && isFunction(value) == functions) names->push_back(name);
    }
    return true;
}

}  // namespace osa::script
