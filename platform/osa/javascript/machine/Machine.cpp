// One engine's thread: start, calls, limits, end.
#include "platform/osa/javascript/machine/Machine.h"

#include <CoreServices/MacErrors.h>

#include <malloc.h>
#include <signal.h>
#include <unistd.h>

#include <exception>
#include <new>
#include <system_error>

#include "platform/osa/javascript/machine/Jobs.h"
#include "platform/osa/javascript/machine/Machines.h"

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

/// How long the end of an instance waits for a call that came between.
constexpr auto kLastWait = 1s;

/// The machine whose thread this is.
thread_local Machine* here = nullptr;

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

bool Machine::leadsHere() const {
    const Machine* last = this;
    while (last != here && last->visited_ != nullptr) last = last->visited_;
    return last == here;
}

/// The time that an engine's thread spends in a call of another machine, unless that waits for it.
class Machine::Visit {
  public:
    explicit Visit(const Machine& host) {
        if (here == nullptr) return;
        const std::lock_guard lock(machines().visiting);
        isCircle_ = host.leadsHere();
        if (!isCircle_) here->visited_ = &host;
    }
    ~Visit() {
        if (here == nullptr || isCircle_) return;
        const std::lock_guard lock(machines().visiting);
        here->visited_ = nullptr;
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    bool isCircle() const { return isCircle_; }

  private:
    bool isCircle_ = false;
};

Machine::Machine(const OSALimits& limits) : limits_(limits), process_(getpid()) {}

Machine::~Machine() = default;

Machine::Ptr Machine::make(const OSALimits& limits) {
    if (!ownsEngine()) return nullptr;
    Ptr machine(new Machine(limits));
    return machine->start() ? std::move(machine) : nullptr;
}

bool Machine::start() {
    // The process's end, which may know the machine before this does, waits for it.
    const std::lock_guard starting(callers_);
    if (machines().ending) return false;
    try {
        const NoSignals none;
        thread_ = std::thread([this] { serve(); });
    } catch (const std::system_error&) {
        return false;
    }
    answered_.take();
    return status_ == noErr;
}

void Machine::Ender::operator()(Machine* machine) const {
    // It is known until its thread has gone: the process's end must not overtake that.
    if (!machine->end()) return;
    {
        const std::lock_guard lock(machines().lock);
        machines().alive.erase(machine);
    }
    delete machine;
}

bool Machine::end() {
    return end(Clock::now() + kLastWait);
}

bool Machine::end(Clock::time_point until) {
    if (getpid() != process_ || here == this) return false;
    interrupt();
    std::unique_lock lock(callers_, std::try_to_lock);
    while (!lock.owns_lock()) {
        if (Clock::now() > until) return false;
        std::this_thread::sleep_for(1ms);
        // What runs may be another call by now.
        interrupt();
        lock.try_lock();
    }
    if (!ended_) {
        work_ = nullptr;
        asked_.give();
    }
    ended_ = true;
    if (thread_.joinable()) thread_.join();
    return true;
}

OSAError Machine::setUp() {
    const std::lock_guard lock(machines().making);
    if (machines().ending || !engineReady()) return memFullErr;
    {
        const std::lock_guard known(machines().lock);
        machines().alive.insert(this);
    }
    const UInt32 bytes = limits_.memoryBytes == 0 ? UINT32_MAX : limits_.memoryBytes;
    context_ = JS_NewContext(bytes);
    if (context_ == nullptr) return memFullErr;
    JS_SetContextPrivate(context_, this);
    JS_SetNativeStackQuota(context_, kStackQuota);
    JS::ContextOptionsRef(context_).setWasm(false).setAsmJS(false);
    JS::SetOutOfMemoryCallback(
        context_,
        [](JSContext*, void* self) { static_cast<Machine*>(self)->stopped_ = errOSASystemError; },
        this);
    jobs_.reset(new (std::nothrow) Jobs(*this));
    if (jobs_ == nullptr || !JS::InitSelfHostedCode(context_) ||
        !JS_AddInterruptCallback(context_, onInterrupt))
        return memFullErr;
    JS::SetJobQueue(context_, jobs_.get());
    memory_.init(context_);
    return noErr;
}

void Machine::tearDown() {
    if (context_ == nullptr) return;
    memory_.reset();
    JS::SetJobQueue(context_, nullptr);
    jobs_.reset();
    JS_DestroyContext(context_);
}

void Machine::serve() {
    here = this;
    status_ = guarded([this] { return setUp(); });
    const bool isUp = status_ == noErr;
    answered_.give();
    while (isUp) {
        asked_.take();
        if (work_ == nullptr) break;
        status_ = guarded(*work_);
        jobs_->clear();
        answered_.give();
    }
    tearDown();
}

OSAError Machine::guarded(const std::function<OSAError()>& work) {
    try {
        return work();
    } catch (const std::exception&) {
        return memFullErr;
    }
}

OSAError Machine::call(const std::function<OSAError()>& work) {
    return aside([&] { return here == this ? work() : handOver(work); });
}

OSAError Machine::aside(const std::function<OSAError()>& work) {
    if (getpid() != process_) return errOSASystemError;
    if (here == this) return guarded(work);
    const Visit visit(*this);
    if (visit.isCircle()) return errOSASystemError;
    const std::lock_guard lock(callers_);
    return ended_ || machines().ending ? OSAError{errOSASystemError} : guarded(work);
}

OSAError Machine::handOver(const std::function<OSAError()>& work) {
    const auto begin = Clock::now();
    work_ = &work;
    stopped_ = noErr;
    deadline_ = begin + std::chrono::milliseconds(limits_.milliseconds);
    {
        const std::lock_guard stop(stopping_);
        cancelled_ = false;
        running_ = true;
    }
    asked_.give();
    awaitAnswer(begin);
    return status_;
}

void Machine::awaitAnswer(Clock::time_point asked) {
    const bool timed = limits_.milliseconds != 0;
    const std::size_t growth = limits_.memoryBytes / 8;
    std::size_t heap = 0;
    while (!answered_.takeWithin(kTick)) {
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
    ++interruptions_;
    const std::lock_guard stop(stopping_);
    if (!running_) return;
    cancelled_ = true;
    JS_RequestInterruptCallback(context_);
}

bool Machine::watch() {
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
    } else if (memory_ == nullptr) {
        return true;
    } else if (limits_.milliseconds != 0 && Clock::now() > deadline_) {
        stopped_ = errOSASystemError;
    } else if (stopped_ == noErr && !withinMemory()) {
        stopped_ = errOSASystemError;
    }
    return stopped_ == noErr;
}

bool Machine::withinMemory() {
    if (limits_.memoryBytes == 0) return true;
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
