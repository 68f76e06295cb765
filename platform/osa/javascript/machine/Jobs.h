// What promises left to be done, which ends with the call that caused it.
#pragma once

#include "platform/osa/javascript/machine/Engine.h"
#include "platform/osa/javascript/machine/Machine.h"

namespace osa::script {

/// On the engine's thread.
class Machine::Jobs : public JS::JobQueue {
  public:
    explicit Jobs(Machine& machine) : machine_(machine), waiting_(machine.context(), Waiting()) {}
    void clear() { waiting_.get().clear(); }

    JSObject* getIncumbentGlobal(JSContext* cx) override { return JS::CurrentGlobalOrNull(cx); }
    bool enqueuePromiseJob(JSContext* cx, JS::HandleObject, JS::HandleObject job, JS::HandleObject,
                           JS::HandleObject) override {
        if (waiting_.get().append(job)) return true;
        JS_ReportOutOfMemory(cx);
        return false;
    }
    bool empty() const override { return waiting_.get().empty(); }
    void runJobs(JSContext* cx) override {
        if (running_) return;
        running_ = true;
        JS::RootedObject job(cx);
        JS::RootedValue callee(cx), ignored(cx);
        for (std::size_t i = 0; i < waiting_.get().length() && machine_.stopped() == 0; ++i) {
            job = waiting_.get()[i];
            waiting_.get()[i] = nullptr;
            callee.setObject(*job);
            JSAutoRealm realm(cx, job);
            if (JS_CheckForInterrupt(cx) && !JS::Call(cx, JS::UndefinedHandleValue, callee,
                                                      JS::HandleValueArray::empty(), &ignored))
                JS_ClearPendingException(cx);
        }
        clear();
        running_ = false;
    }

  protected:
    js::UniquePtr<SavedJobQueue> saveJobQueue(JSContext*) override { return nullptr; }

  private:
    using Waiting = JS::GCVector<JSObject*, 0, js::SystemAllocPolicy>;
    Machine& machine_;
    JS::PersistentRooted<Waiting> waiting_;
    bool running_ = false;
};

}  // namespace osa::script
