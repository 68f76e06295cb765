// The engine's thread: start, calls, limits, end.
#include "platform/osa/javascript/Machine.h"

#include <CoreServices/MacErrors.h>

#include <malloc.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <set>
#include <system_error>

namespace osa::script {
namespace {

using namespace std::chrono_literals;

/// How often the caller looks at the clock and the heap while a script runs.
constexpr auto kTick = 20ms;
/// How often a script is asked in any case. A regular expression that is asked five times is given
/// up by the engine.
constexpr auto kRarely = 1s;

/// What the process has allocated, roughly.
std::size_t heapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Threads get 2 MiB at least; the engine counts from where its thread starts.
constexpr std::size_t kStackQuota = 1024 * 1024;

/// How long the process's end waits for a script.
constexpr auto kLastWait = 1s;

struct Machines {
    std::mutex making;  ///< contexts are made one after the other: the first sets the process up
    std::mutex lock;
    std::set<Machine*> alive;
};

Machines& machines() {
    static auto* const everything = new Machines;
    return *everything;
}

/// The process that set the engine up.
pid_t& owner() {
    static pid_t process = 0;
    return process;
}

/// The engine's helpers must be gone before the static objects that they wait at.
void endAll(int status, void*) {
    if (getpid() != owner()) {
        // Helpers that a forked child has no more still wait at those objects: they cannot go.
        std::fflush(nullptr);
        _exit(status);
    }
    const std::lock_guard lock(machines().lock);
    bool ended = true;
    for (Machine* const machine : machines().alive) ended = machine->end() && ended;
    if (ended) JS_ShutDown();
}

bool engineReady() {
    static const bool ready = [] {
        // Larger ones would be lent by the system in one piece before anybody can look.
        owner() = getpid();
        JS::SetLargeArrayBuffersEnabled(false);
        return JS_Init() && on_exit(endAll, nullptr) == 0;
    }();
    return ready;
}

double number(JSContext* cx, JS::HandleObject object, const char* name) {
    JS::RootedValue value(cx);
    return JS_GetProperty(cx, object, name, &value) && value.isNumber() ? value.toNumber() : 0;
}

/// The thread that is made meanwhile takes none of the host's signals.
class NoSignals {
  public:
    NoSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

  private:
    sigset_t before_;
};

}  // namespace

/// What promises left to be done, which ends with the call that caused it.
class Machine::Jobs : public JS::JobQueue {
  public:
    explicit Jobs(Machine& machine) : machine_(machine), waiting_(machine.context_, Waiting()) {}
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
        for (std::size_t i = 0; i < waiting_.get().length() && machine_.stopped_ == noErr; ++i) {
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

Machine::Machine(const OSALimits& limits) : limits_(limits), process_(getpid()) {}

std::unique_ptr<Machine> Machine::make(const OSALimits& limits) {
    std::unique_ptr<Machine> machine(new Machine(limits));
    return machine->start() ? std::move(machine) : nullptr;
}

bool Machine::start() {
    try {
        const NoSignals none;
        thread_ = std::thread([this] { serve(); });
    } catch (const std::system_error&) {
        return false;
    }
    answered_.acquire();
    if (status_ != noErr) return false;
    const std::lock_guard lock(machines().lock);
    return machines().alive.insert(this).second;
}

Machine::~Machine() {
    {
        const std::lock_guard lock(machines().lock);
        machines().alive.erase(this);
    }
    if (thread_.joinable() && !end()) thread_.detach();
}

bool Machine::end() {
    if (getpid() != process_) return false;
    if (std::this_thread::get_id() == thread_.get_id()) return false;
    interrupt();
    const std::unique_lock lock(callers_, kLastWait);
    if (!lock.owns_lock()) return false;
    if (!ended_ && context_ != nullptr) {
        work_ = nullptr;
        asked_.release();
    }
    ended_ = true;
    if (thread_.joinable()) thread_.join();
    return true;
}

void Machine::setUp() {
    const std::lock_guard lock(machines().making);
    if (!engineReady()) return;
    const UInt32 bytes = limits_.memoryBytes == 0 ? UINT32_MAX : limits_.memoryBytes;
    JSContext* const cx = JS_NewContext(bytes);
    if (cx == nullptr) return;
    JS_SetContextPrivate(cx, this);
    JS_SetNativeStackQuota(cx, kStackQuota);
    JS::ContextOptionsRef(cx).setWasm(false).setAsmJS(false);
    JS::SetOutOfMemoryCallback(
        cx,
        [](JSContext*, void* self) { static_cast<Machine*>(self)->stopped_ = errOSASystemError; },
        this);
    if (!JS::InitSelfHostedCode(cx) || !JS_AddInterruptCallback(cx, onInterrupt)) {
        JS_DestroyContext(cx);
        return;
    }
    context_ = cx;
    jobs_ = std::make_unique<Jobs>(*this);
    JS::SetJobQueue(cx, jobs_.get());
}

void Machine::serve() {
    setUp();
    status_ = context_ == nullptr ? memFullErr : noErr;
    answered_.release();
    if (context_ == nullptr) return;
    memory_.init(context_);
    for (;;) {
        asked_.acquire();
        if (work_ == nullptr) break;
        status_ = guarded(*work_);
        jobs_->clear();
        answered_.release();
    }
    memory_.reset();
    JS::SetJobQueue(context_, nullptr);
    jobs_.reset();
    JS_DestroyContext(context_);
}

OSAError Machine::guarded(const std::function<OSAError()>& work) {
    try {
        return work();
    } catch (const std::exception&) {
        return memFullErr;
    }
}

OSAError Machine::call(const std::function<OSAError()>& work) {
    if (getpid() != process_) return errOSASystemError;
    if (std::this_thread::get_id() == thread_.get_id()) return guarded(work);
    const std::lock_guard lock(callers_);
    if (ended_) return errOSASystemError;
    work_ = &work;
    stopped_ = noErr;
    deadline_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(limits_.milliseconds);
    {
        const std::lock_guard stop(stopping_);
        cancelled_ = false;
        running_ = true;
    }
    asked_.release();
    awaitAnswer();
    return status_;
}

void Machine::awaitAnswer() {
    using Clock = std::chrono::steady_clock;
    const bool timed = limits_.milliseconds != 0;
    const std::size_t growth = limits_.memoryBytes / 8;
    std::size_t heap = 0;
    Clock::time_point asked = Clock::now();
    while (!answered_.try_acquire_for(kTick)) {
        const Clock::time_point now = Clock::now();
        const std::size_t used = growth == 0 ? 0 : heapBytes();
        if (heap == 0) heap = used;
        const bool grown = growth != 0 && used > heap + growth;
        if (!grown && now - asked < kRarely && !(timed && now > deadline_)) continue;
        heap = used;
        asked = now;
        JS_RequestInterruptCallback(context_);
    }
    const std::lock_guard stop(stopping_);
    running_ = false;
}

void Machine::interrupt() {
    const std::lock_guard stop(stopping_);
    if (!running_) return;
    cancelled_ = true;
    JS_RequestInterruptCallback(context_);
}

bool Machine::watchMemory() {
    memory_ = js::gc::NewMemoryInfoObject(context_);
    return memory_ != nullptr;
}

void Machine::drain() {
    jobs_->runJobs(context_);
}

bool Machine::onInterrupt(JSContext* context) {
    return static_cast<Machine*>(JS_GetContextPrivate(context))->mayGoOn();
}

bool Machine::mayGoOn() {
    if (cancelled_) {
        stopped_ = userCanceledErr;
    } else if (limits_.milliseconds != 0 && std::chrono::steady_clock::now() > deadline_) {
        stopped_ = errOSASystemError;
    } else if (stopped_ == noErr && !withinMemory()) {
        stopped_ = errOSASystemError;
    }
    return stopped_ == noErr;
}

bool Machine::withinMemory() {
    if (limits_.memoryBytes == 0 || memory_ == nullptr) return true;
    const bool enabled = JS_DisableInterruptCallback(context_);
    const auto used = [this] {
        return number(context_, memory_, "gcBytes") + number(context_, memory_, "mallocBytes");
    };
    bool within = used() <= limits_.memoryBytes;
    if (!within) {
        // What is over the limit may be what nobody holds any more.
        JS_GC(context_);
        within = used() <= limits_.memoryBytes;
    }
    JS_ResetInterruptCallback(context_, enabled);
    return within;
}

}  // namespace osa::script
