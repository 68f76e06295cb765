// A compiled script: its source, its code and the global object that keeps its properties and
// functions between runs.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/osa/javascript/Host.h"
#include "platform/osa/javascript/Names.h"
#include "platform/osa/javascript/ScriptErrors.h"
#include "platform/osa/javascript/Storage.h"
#include "platform/osa/javascript/machine/Machine.h"

namespace osa::script {

/// On the engine's thread. What answers bool or a pointer leaves an exception pending when it
/// fails, or none when the script was stopped or is too large for the memory limit.
class Script {
  public:
    using Ptr = std::shared_ptr<Script>;

    Script(Machine& machine, Host& host, StoredSource source);
    bool compile();
    const SourceText& text() const { return text_; }
    bool runOnly() const { return runOnly_; }

    /// Runs the top level and what promises left to be done; a promise that is settled by then
    /// stands for its value or error, here and in call(). A script with top-level `let`, `const` or
    /// `class` gets a new global object to be run again; properties go over to it.
    bool run(JS::MutableHandleValue result);
    /// Runs the top level unless that succeeded before; `fresh` tells.
    bool ensureRun(bool* fresh, JS::MutableHandleValue result);
    /// Evaluates more source in the same global object; it is added to the script's own when it
    /// succeeds. `more` has what it is called in errors.
    bool augment(const SourceText& more);
    /// Makes `parent` (may be null) what names are looked up in that the script does not have.
    bool inherit(const Ptr& parent);

    /// The script's or its parents' function for a handler; undefined when there is none.
    bool handler(const Name& name, JS::MutableHandleValue function);
    /// The script's or its parents' property; `found` tells.
    bool property(const std::u16string& name, bool* found, JS::MutableHandleValue value);
    /// Calls a function with the global object as `this`, in whose realm the arguments are.
    bool call(JS::HandleValue function, const JS::HandleValueArray& arguments,
              JS::MutableHandleValue result);
    /// The names of functions, or of all else, that the script has at its top level.
    bool names(bool functions, std::vector<std::u16string>* names);
    /// The script's own function of that name, not a parent's; undefined when there is none.
    bool ownFunction(const std::u16string& name, JS::MutableHandleValue function);
    /// Takes on the context and the state of a script of the same source that was run: runs, so
    /// that functions are this script's own, then sets what else the other one has.
    bool takeOver(const Script& other);
    JSObject* global() const { return global_; }
    JSContext* context() const { return cx_; }

  private:
    JSScript* compiled(const SourceText& text);
    bool renew();
    bool carryOver(JS::HandleObject from, JS::HandleObject to);
    bool settle(JS::MutableHandleValue result);
    bool registered(JS::HandleObject global, const std::u16string& event,
                    JS::MutableHandleValue function);

    Machine& machine_;
    Host& host_;
    JSContext* const cx_;
    SourceText text_;
    const bool runOnly_;
    bool begun_ = false;  ///< declarations may be there already
    bool ran_ = false;    ///< to its end, or it runs now
    Ptr parent_;
    JS::PersistentRootedObject global_;
    JS::PersistentRootedScript code_;
};

}  // namespace osa::script
