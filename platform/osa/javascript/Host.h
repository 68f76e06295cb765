// Realms: the room's own one, and one for each script with what a script finds there.
//
// All are of one compartment, so that values go from one to another as they are.
#pragma once

#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "platform/osa/javascript/machine/Engine.h"

namespace osa::script {

/// On the engine's thread. Functions that answer bool or a pointer leave an exception pending when
/// they fail.
class Host {
  public:
    Host(JSContext* cx, std::size_t memoryBytes)
        : cx_(cx), memoryBytes_(memoryBytes), base_(cx), prelude_(cx) {}
    bool setUp();

    JSContext* context() const { return cx_; }
    /// Whether a conversion may take so many bytes.
    bool affords(std::size_t bytes) const { return memoryBytes_ == 0 || bytes <= memoryBytes_; }
    /// Whether the engine may compile the source, and reduce() take it: neither is interrupted.
    bool affordsCompiling(std::u16string_view source) const;
    bool affordsReducing(std::u16string_view source) const;
    /// How many characters one may make.
    double affordedText() const {
        return memoryBytes_ == 0 ? HUGE_VAL : static_cast<double>(memoryBytes_ / sizeof(char16_t));
    }
    JSObject* base() const { return base_; }
    /// The entered realm's own prototype of File, or of Descriptor.
    JSObject* heldPrototype(bool file);

    /// A global object with the language's own objects, `on` and `console`, which gives its lines
    /// to what OSASetLogProc set. With `withoutSource` its functions do not tell their source.
    JSObject* newGlobal(bool withoutSource);
    /// Collects garbage when many global objects were made since that was done: the engine takes
    /// them for small.
    void tidy();
    /// Lets names that `global` does not have be looked up in `parent`, too; null ends that. The
    /// parent's `let`, `const` and `class` are no properties of it: they are copied.
    bool inherit(JS::HandleObject global, JS::HandleObject parent);

    /// Calls a function of the prelude, in the room's realm.
    bool ask(const char* function, const JS::HandleValueArray& arguments,
             JS::MutableHandleValue answer);
    /// Leaves of a script's source what running it needs, to be stored run-only. Fails with an
    /// exception for what nests too deep for that, without one for what is too large.
    bool reduce(std::u16string* source);

  private:
    bool evaluate(const char16_t* expression, JS::MutableHandleValue value);
    bool log(const JS::CallArgs& args);
    static bool onLog(JSContext* cx, unsigned count, JS::Value* values);
    bool runPrelude();
    bool furnish();

    JSContext* cx_;
    const std::size_t memoryBytes_;
    int globals_ = 0;
    JS::PersistentRootedObject base_, prelude_;
};

inline bool isFunction(JS::HandleValue value) {
    return value.isObject() && JS::IsCallable(&value.toObject());
}
/// Names of the object's own enumerable properties, after those that are there.
bool appendNames(JSContext* cx, JS::HandleObject object, std::vector<std::u16string>* names);
/// Whether `object` is a script's global object, or stands between one and its parent.
bool isScope(JSObject* object);
/// The property or top-level declaration of that name in `scope` alone; `found` tells whether it is
/// the script's. What has no value yet is not found.
bool lookUp(JSContext* cx, JS::HandleObject scope, std::u16string_view name, bool* found,
            JS::MutableHandleValue value);

}  // namespace osa::script
