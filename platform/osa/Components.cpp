// Component Manager: the register of components, and opening and closing instances of them.
#include "platform/osa/Components.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "platform/base/FourCC.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

// States of an instance that nothing uses; each use adds 1.
constexpr UInt64 kOpen = UInt64{0x6F736169} << 32;
constexpr UInt64 kClosed = UInt64{0x6F736163} << 32;

/// The calls that are under way on this thread, the innermost first.
thread_local const InstanceInUse* underWay = nullptr;

constexpr bool isOpen(UInt64 state) {
    return state >> 32 == kOpen >> 32;
}

/// Adds `change` to the state of an open instance. False when it is none.
bool changeOpen(ComponentInstance instance, UInt64 change, UInt64* before) {
    if (instance == nullptr) return false;
    *before = instance->state;
    do {
        if (!isOpen(*before)) return false;
    } while (!instance->state.compare_exchange_weak(*before, *before + change));
    return true;
}

constexpr std::size_t kLongestName = 255;

struct Register {
    std::mutex lock;
    std::mutex loading;  // held while a library loads, which may register components of its own
    std::vector<std::unique_ptr<ComponentRecord>> components;
};

std::unique_ptr<ComponentRecord> builtIn(OSType subType, const char* name, const char* library,
                                         const OSAComponentCalls* calls) {
    auto component = std::make_unique<ComponentRecord>();
    component->subType = subType;
    component->name = name;
    component->library = library;
    component->calls = calls;
    return component;
}

Register& componentRegister() {
    static auto* const everything = [] {
        auto made = std::make_unique<Register>();
        made->components.push_back(builtIn(kOSAGenericScriptingComponentSubtype,
                                           "Generic Scripting System", "", &genericCalls()));
        made->components.push_back(
            builtIn(FourCC("jscr"), "JavaScript", "libosajavascript.so", nullptr));
        return made.release();
    }();
    return *everything;
}

/// Where in the register the component is; the end for what is none.
auto place(Register& all, Component component) {
    return std::find_if(all.components.begin(), all.components.end(),
                        [&](const auto& known) { return known.get() == component; });
}

bool meets(const ComponentRecord& component, const ComponentDescription* looking) {
    if (looking == nullptr) return true;
    const bool isType = looking->componentType == 0 || looking->componentType == kOSAComponentType;
    const bool isSubType =
        looking->componentSubType == 0 || looking->componentSubType == component.subType;
    const bool areFlags = (looking->componentFlags & looking->componentFlagsMask) == 0;
    return isType && isSubType && looking->componentManufacturer == 0 && areFlags;
}

/// The folder of the file that this code is in, with "/" at its end.
std::string ownFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&componentRegister), &info) == 0 ||
        info.dli_fname == nullptr)
        return {};
    const std::string file = info.dli_fname;
    const std::size_t slash = file.rfind('/');
    return slash == std::string::npos ? "./" : file.substr(0, slash + 1);
}

/// What is loaded stays: its engine may have threads, and handlers at the process's end.
const OSAComponentCalls* loadCalls(const std::string& library) {
    for (const std::string& folder : {ownFolder(), ownFolder() + "../lib/osa/"}) {
        void* const loaded = dlopen((folder + library).c_str(), RTLD_NOW | RTLD_LOCAL);
        if (loaded == nullptr) continue;
        const auto entry = reinterpret_cast<OSAComponentEntry>(dlsym(loaded, "OSAComponent"));
        const OSAComponentCalls* const calls = entry == nullptr ? nullptr : entry();
        if (calls != nullptr && calls->size >= sizeof(OSAComponentCalls)) return calls;
    }
    return nullptr;
}

void letGo(Component component) {
    const std::scoped_lock guard(componentRegister().lock);
    --component->instances;
}

/// Counts an instance, which keeps the component from being taken away.
class Hold {
  public:
    explicit Hold(Component component) {
        Register& all = componentRegister();
        const std::scoped_lock guard(all.lock);
        if (place(all, component) == all.components.end()) return;
        ++component->instances;
        component_ = component;
    }
    ~Hold() {
        if (component_ != nullptr) letGo(component_);
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    /// Null when it is no component.
    Component component() const { return component_; }
    void keep() { component_ = nullptr; }

  private:
    Component component_ = nullptr;
};

/// The table of a component that is held; null when its library cannot be had.
const OSAComponentCalls* callsOf(Component component) {
    Register& all = componentRegister();
    const std::scoped_lock alone(all.loading);
    if (component->calls == nullptr) component->calls = loadCalls(component->library);
    return component->calls;
}

/// Null, with the component still held, when it does not open.
ComponentInstance openHeld(Component component) {
    const OSAComponentCalls* const calls = callsOf(component);
    if (calls == nullptr) return nullptr;
    std::unique_ptr<ComponentInstanceRecord> instance(
        new ComponentInstanceRecord{kOpen, component, calls, nullptr});
    if (calls->open != nullptr && calls->open(instance.get(), &instance->storage) != noErr)
        return nullptr;
    return instance.release();
}

/// Ends an instance that no call uses.
OSErr end(ComponentInstance ended) {
    const std::unique_ptr<ComponentInstanceRecord> instance(ended);
    OSErr status = noErr;
    try {
        if (instance->calls->close != nullptr) instance->calls->close(instance->storage);
    } catch (...) {
        status = errOSASystemError;
    }
    letGo(instance->component);
    return status;
}

/// Ends one use of an instance, and the instance when it is closed and that was the last.
OSErr leave(ComponentInstance instance) {
    return --instance->state == kClosed ? end(instance) : OSErr{noErr};
}

void interrupt(ComponentInstance instance) try {
    if (instance->calls->interrupt != nullptr) instance->calls->interrupt(instance->storage);
} catch (...) {
    // there is no status to tell it with; what runs answers for itself
}

/// Mac Roman when the name can be written in it, cut to what a Pascal string holds.
OSErr setPascalName(Handle handle, const std::string& name) {
    std::u16string units;
    utf16FromUTF8(name, units);
    std::string bytes;
    encodeText(units, kTextEncodingMacRoman, '?', bytes);
    bytes.resize(std::min(bytes.size(), kLongestName));
    bytes.insert(bytes.begin(), static_cast<char>(bytes.size()));
    SetHandleSize(handle, static_cast<Size>(bytes.size()));
    if (MemError() != noErr) return MemError();
    std::memcpy(*handle, bytes.data(), bytes.size());
    return noErr;
}

Component add(OSType subType, const char* name, const OSAComponentCalls* calls) {
    Register& all = componentRegister();
    auto component = builtIn(subType, name, "", calls);
    const std::scoped_lock guard(all.lock);
    const bool isTaken = std::any_of(all.components.begin(), all.components.end(),
                                     [&](const auto& known) { return known->subType == subType; });
    if (isTaken) return nullptr;
    all.components.push_back(std::move(component));
    return all.components.back().get();
}

}  // namespace

bool isInstance(ComponentInstance instance) {
    return instance != nullptr && isOpen(instance->state);
}

InstanceInUse::InstanceInUse(ComponentInstance instance) : outer_(underWay) {
    UInt64 before = 0;
    if (changeOpen(instance, 1, &before)) instance_ = instance;
    underWay = this;
}

InstanceInUse::~InstanceInUse() {
    underWay = outer_;
    if (instance_ != nullptr) leave(instance_);
}

bool InstanceInUse::isHere(ComponentInstance instance) {
    const InstanceInUse* use = underWay;
    while (use != nullptr && use->instance_ != instance) use = use->outer_;
    return use != nullptr;
}

Component findScriptingComponent(OSType subType) {
    const ComponentDescription looking{kOSAComponentType, subType, 0, 0, 0};
    return subType == 0 ? nullptr : FindNextComponent(nullptr, &looking);
}

OSType firstScriptingSubType() {
    Register& all = componentRegister();
    const std::scoped_lock guard(all.lock);
    for (const auto& component : all.components)
        if (component->subType != kOSAGenericScriptingComponentSubtype) return component->subType;
    return 0;
}

}  // namespace osa

Component FindNextComponent(Component aComponent, const ComponentDescription* looking) try {
    osa::Register& all = osa::componentRegister();
    const std::scoped_lock guard(all.lock);
    auto next = all.components.begin();
    if (aComponent != nullptr) {
        next = osa::place(all, aComponent);
        if (next != all.components.end()) ++next;
    }
    for (; next != all.components.end(); ++next)
        if (osa::meets(**next, looking)) return next->get();
    return nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

OSErr GetComponentInfo(Component aComponent, ComponentDescription* description,
                       Handle componentName, Handle, Handle) try {
    osa::Register& all = osa::componentRegister();
    const std::scoped_lock guard(all.lock);
    if (osa::place(all, aComponent) == all.components.end()) return invalidComponentID;
    if (description != nullptr) *description = {kOSAComponentType, aComponent->subType, 0, 0, 0};
    return componentName == nullptr ? OSErr{noErr}
                                    : osa::setPascalName(componentName, aComponent->name);
} catch (const std::bad_alloc&) {
    return memFullErr;
}

ComponentInstance OpenComponent(Component aComponent) try {
    osa::Hold hold(aComponent);
    if (hold.component() == nullptr) return nullptr;
    const ComponentInstance instance = osa::openHeld(aComponent);
    if (instance != nullptr) hold.keep();
    return instance;
} catch (...) {
    return nullptr;
}

ComponentInstance OpenDefaultComponent(OSType componentType, OSType componentSubType) {
    const ComponentDescription looking{componentType, componentSubType, 0, 0, 0};
    const Component component = FindNextComponent(nullptr, &looking);
    return component == nullptr ? nullptr : OpenComponent(component);
}

OSErr CloseComponent(ComponentInstance aComponentInstance) {
    // Closing is a use as well: what runs may end, but the instance must be there to be
    // interrupted.
    UInt64 before = 0;
    if (!osa::changeOpen(aComponentInstance, osa::kClosed - osa::kOpen + 1, &before))
        return static_cast<OSErr>(badComponentInstance);
    const bool isUsed = before != osa::kOpen;
    if (isUsed && !osa::InstanceInUse::isHere(aComponentInstance))
        osa::interrupt(aComponentInstance);
    return osa::leave(aComponentInstance);
}

void OSAInterrupt(ComponentInstance scriptingComponent) {
    const osa::InstanceInUse use(scriptingComponent);
    if (use) osa::interrupt(scriptingComponent);
}

OSErr OSARegisterComponent(OSType subType, const char* name, const OSAComponentCalls* calls,
                           Component* component) try {
    if (component != nullptr) *component = nullptr;
    if (subType == 0 || name == nullptr || calls == nullptr ||
        calls->size < sizeof(OSAComponentCalls))
        return paramErr;
    const Component added = osa::add(subType, name, calls);
    if (component != nullptr) *component = added;
    return added == nullptr ? paramErr : noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr OSAUnregisterComponent(Component component) try {
    osa::Register& all = osa::componentRegister();
    const std::scoped_lock guard(all.lock);
    const auto known = osa::place(all, component);
    if (known == all.components.end()) return invalidComponentID;
    if ((*known)->instances != 0) return static_cast<OSErr>(badComponentInstance);
    all.components.erase(known);
    return noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}
