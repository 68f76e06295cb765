// One engine on a thread of its own. The engine insists on one thread; an instance of a component
// may be used on any. Calls are handed over and waited for.
#pragma once

#include <OSA/ScriptingComponents.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/osa/javascript/machine/Engine.h"
#include "platform/osa/javascript/machine/Signal.h"

namespace osa::script {

class Machine {
  public:
    /// Ends the thread. A machine that cannot be ended is left as it is, thread and all: that of
    /// another process, whose thread a forked child does not have.
    struct Ender {
        void operator()(Machine* machine) const;
    };
    using Ptr = std::unique_ptr<Machine, Ender>;

    /// Null when there is no memory or no thread for it, when the process ends, and in the child of
    /// a process that has tried to make one.
    static Ptr make(const OSALimits& limits);
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// Runs `work` on the engine's thread within the limits and gives its status: memFullErr when
    /// it throws. Called on that thread (by a coercion that a script's value causes), at once.
    /// errOSASystemError on the thread of a machine that itself waits for this one.
    OSAError call(const std::function<OSAError()>& work);
    /// The same on the caller's thread, for what needs no engine but that it does nothing
    /// meanwhile.
    OSAError aside(const std::function<OSAError()>& work);
    /// Stops what runs now; on any thread.
    void interrupt();
    /// How often that was asked for: a call that waited for another meanwhile is not to begin.
    unsigned interruptions() const { return interruptions_; }
    /// Ends the thread, after what runs was stopped. Later calls answer errOSASystemError. False
    /// when the script would not stop until then, or its thread or another process asks for it.
    bool end(std::chrono::steady_clock::time_point until);
    /// The same, within a second.
    bool end();
    /// What stopped the running call: noErr, errOSASystemError for a limit, userCanceledErr.
    OSAError stopped() const { return stopped_; }

    JSContext* context() const { return context_; }

    // On the engine's thread:
    /// Begins to hold scripts to the limits. A realm is entered, whose objects live on.
    bool watch();
    /// Runs what promises left to be done.
    void drain();

  private:
    using Clock = std::chrono::steady_clock;
    class Jobs;
    class Visit;
    explicit Machine(const OSALimits& limits);
    ~Machine();
    void serve();
    bool start();
    OSAError setUp();
    void tearDown();
    OSAError guarded(const std::function<OSAError()>& work);
    OSAError handOver(const std::function<OSAError()>& work);
    void awaitAnswer(Clock::time_point asked);
    bool mayGoOn();
    bool withinMemory();
    /// Whether it waits, directly or not, for the machine whose thread this is.
    bool leadsHere() const;
    static bool onInterrupt(JSContext* context);

    const OSALimits limits_;
    JSContext* context_ = nullptr;
    JS::PersistentRootedObject memory_;  ///< the engine's account of what it allocated
    std::unique_ptr<Jobs> jobs_;
    const int process_;  ///< a child that was forked has no thread of ours
    std::thread thread_;
    std::mutex callers_;
    bool ended_ = false;                ///< with callers_
    const Machine* visited_ = nullptr;  ///< whose answer its thread waits for
    std::mutex stopping_;  ///< context_ is alive while this is held and running_ is true
    bool running_ = false;
    Signal asked_;
    Signal answered_;
    const std::function<OSAError()>* work_ = nullptr;  ///< null asks the thread to end
    OSAError status_ = 0;
    Clock::time_point deadline_;
    std::atomic<bool> cancelled_ = false;
    std::atomic<unsigned> interruptions_ = 0;
    OSAError stopped_ = 0;
};

}  // namespace osa::script
