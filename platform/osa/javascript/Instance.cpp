// Instances of the component.
#include "platform/osa/javascript/Instance.h"

#include <CoreServices/MacErrors.h>

#include <atomic>
#include <new>
#include <utility>

namespace osa::script {
namespace {

/// How many numbers are disposed of before that alone is worth a call.
constexpr std::size_t kMostDisposed = 64;

/// No two instances give the same number, so that another's is not mistaken for one's own.
OSAID newID() {
    static std::atomic<OSAID> last = 0;
    OSAID id = 0;
    while (id == kOSANullScript) id = ++last;
    return id;
}

}  // namespace

std::unique_ptr<Instance> Instance::make() {
    OSALimits limits;
    OSAGetLimits(&limits);
    std::unique_ptr<Instance> made(new Instance);
    made->disposed_.reserve(kMostDisposed);
    made->machine_ = Machine::make(limits);
    if (made->machine_ == nullptr) return nullptr;
    const OSAError status = made->perform([&made, &limits]() -> OSAError {
        made->host_ = std::make_unique<Host>(made->context(), limits.memoryBytes);
        if (!made->host_->setUp()) return memFullErr;
        JSAutoRealm realm(made->context(), made->host_->base());
        return made->machine_->watch() ? noErr : memFullErr;
    });
    return status == noErr ? std::move(made) : nullptr;
}

Instance::~Instance() {
    if (machine_ == nullptr) return;
    const OSAError status = machine_->call([this]() -> OSAError {
        disposed_.clear();
        items_.clear();
        host_.reset();
        return noErr;
    });
    // When the process ends these are nobody's once the engine is gone. In a forked child they are
    // left: there is nobody to let them go.
    if (status == noErr || machine_->end()) return;
    (void)host_.release();
    (void)new (std::nothrow) auto(std::move(items_));
    (void)new (std::nothrow) auto(std::move(disposed_));
}

OSAError Instance::settle(OSAError status) {
    JSContext* const cx = context();
    const bool thrown = JS_IsExceptionPending(cx);
    if (machine_->stopped() != noErr && (thrown || status == errOSAScriptError)) {
        JS_ClearPendingException(cx);
        JS_GC(cx);
        return machine_->stopped();
    }
    if (thrown) {
        error_.take(cx, current_.get());
        return errOSAScriptError;
    }
    return status == errOSAScriptError ? OSAError{errOSASystemError} : status;
}

OSAError Instance::performHere(const std::function<OSAError()>& work) {
    disposed_.clear();
    const auto before = std::exchange(current_, nullptr);
    OSAError status = noErr;
    std::optional<JSAutoRealm> realm;
    if (host_ != nullptr) realm.emplace(context(), host_->base());
    const bool isSetUp = realm.has_value();
    try {
        status = work();
    } catch (const std::bad_alloc&) {
        status = memFullErr;
    }
    if (isSetUp) status = settle(status);
    if (isSetUp) host_->tidy();
    current_ = before;
    return status;
}

OSAError Instance::perform(const std::function<OSAError()>& work) {
    const unsigned before = machine_->interruptions();
    return machine_->call([&] {
        return machine_->interruptions() == before ? performHere(work) : OSAError{userCanceledErr};
    });
}

OSAError Instance::dispose(OSAID id) {
    if (disposed_.size() == kMostDisposed) perform([]() -> OSAError { return noErr; });
    return machine_->aside([&]() -> OSAError {
        const auto found = items_.find(id);
        if (found == items_.end()) return errOSAInvalidID;
        disposed_.push_back(std::move(found->second));
        items_.erase(found);
        return noErr;
    });
}

Item* Instance::find(OSAID id) {
    const auto found = items_.find(id);
    return found == items_.end() ? nullptr : found->second.get();
}

Item* Instance::findScript(OSAID id) {
    Item* const item = find(id);
    return item != nullptr && item->kind == Kind::script ? item : nullptr;
}

OSAID Instance::add(std::unique_ptr<Item> item) {
    const OSAID id = newID();
    items_.emplace(id, std::move(item));
    return id;
}

OSAID Instance::addValue(JS::HandleValue value) {
    auto item = std::make_unique<Item>(context());
    item->value = value;
    return add(std::move(item));
}

OSAID Instance::addResult(JS::HandleValue value) {
    return value.isUndefined() ? OSAID{kOSANullScript} : addValue(value);
}

Script::Ptr Instance::compile(StoredSource source) {
    auto script = std::make_shared<Script>(*machine_, *host_, std::move(source));
    if (script->compile()) return script;
    // The script is gone when its error is told.
    within(script);
    return nullptr;
}

}  // namespace osa::script
