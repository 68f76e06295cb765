// One instance of the component: the numbers that it gave, and what they stand for.
#pragma once

#include <OpenScripting/OSA.h>

#include <functional>
#include <unordered_map>

#include "platform/osa/javascript/Script.h"

namespace osa::script {

enum class Kind { script, handler, value };

/// What a number stands for. A handler has the script that it was found in.
struct Item {
    explicit Item(JSContext* cx) : value(cx) {}
    Kind kind = Kind::value;
    Script::Ptr script;
    bool isContext = false;
    JS::PersistentRootedValue value;
};

/// All but `perform`, `dispose` and `interrupt` are for the work that perform() does.
class Instance {
  public:
    /// Null when there is no memory.
    static std::unique_ptr<Instance> make();
    ~Instance();

    /// Does `work` on the engine's thread, in the room's realm. An exception that it leaves pending
    /// becomes errOSAScriptError, a limit that stopped it errOSASystemError.
    OSAError perform(const std::function<OSAError()>& work);
    /// Takes a number back; what it stood for goes with a later call.
    OSAError dispose(OSAID id);
    void interrupt() { machine_->interrupt(); }

    JSContext* context() const { return machine_->context(); }
    Host& host() { return *host_; }
    const ScriptError& error() const { return error_; }

    /// Null for a number that the instance did not give.
    Item* find(OSAID id);
    /// Null for what is no script either.
    Item* findScript(OSAID id);
    OSAID add(std::unique_ptr<Item> item);
    OSAID addValue(JS::HandleValue value);
    /// The same, but 0 for undefined.
    OSAID addResult(JS::HandleValue value);

    /// Null with an exception pending.
    Script::Ptr compile(StoredSource source);
    /// Where an error of what comes next is looked for; held, as what runs may dispose of it.
    void within(std::shared_ptr<const SourceText> text) { current_ = std::move(text); }
    void within(const Script::Ptr& script) { current_ = {script, &script->text()}; }

  private:
    Instance() = default;
    OSAError performHere(const std::function<OSAError()>& work);
    OSAError settle(OSAError status);

    Machine::Ptr machine_;
    std::unique_ptr<Host> host_;
    std::unordered_map<OSAID, std::unique_ptr<Item>> items_;
    std::vector<std::unique_ptr<Item>> disposed_;  ///< they go on the engine's thread
    ScriptError error_;
    std::shared_ptr<const SourceText> current_;
};

}  // namespace osa::script
