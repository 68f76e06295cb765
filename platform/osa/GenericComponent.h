// The generic scripting component: its components' instances, and where calls go.
#pragma once

#include <CoreServices/MacErrors.h>
#include <OSA/ScriptingComponents.h>
#include <OpenScripting/OSAGeneric.h>

#include <atomic>
#include <vector>

#include "platform/base/Result.h"
#include "platform/osa/GenericIDs.h"

namespace osa {

/// The subtype that the trailer names; errOSABadStorageType without one, errOSACorruptData.
OSAError storedSubType(const AEDesc& stored, OSType& subType);

class GenericComponent {
  public:
    GenericComponent();
    /// Closes the instances, with all that they hold.
    ~GenericComponent();
    GenericComponent(const GenericComponent&) = delete;
    GenericComponent& operator=(const GenericComponent&) = delete;

    OSType defaultSubType() const { return default_; }
    /// errOSACantOpenComponent when there is none.
    Result<void> setDefault(OSType subType);
    /// The instance of the subtype, opened when it is asked for first. errOSACantOpenComponent.
    Result<ComponentInstance> instanceOf(OSType subType);
    Result<ComponentInstance> defaultInstance() { return instanceOf(default_); }
    /// The instance that a stored script is for: by its trailer, or by the descriptor's type when
    /// that is a component's own.
    Result<ComponentInstance> instanceFor(const AEDesc& stored);
    bool owns(ComponentInstance instance) const;
    /// The instance that answered errOSAScriptError last; null when none has.
    ComponentInstance failed() const { return failed_; }

    GenericIDs& ids() { return ids_; }
    /// errOSAInvalidID.
    Result<RealID> real(OSAID id) const;
    /// The same; for kOSANullScript that of the default component.
    Result<RealID> realOrDefault(OSAID id);

    /// Runs `call`, a published one, on the instance, which can be interrupted meanwhile, and keeps
    /// in mind whose script failed.
    template <typename Call>
    OSAError run(ComponentInstance instance, Call call);
    /// Interrupts what runs, on another thread.
    void interrupt() const { OSAInterrupt(running_.load()); }

  private:
    struct Open {
        OSType subType;
        ComponentInstance instance;
    };
    void noteFailure(ComponentInstance instance, OSAError status);

    std::vector<Open> open_;
    GenericIDs ids_;
    OSType default_;
    ComponentInstance failed_ = nullptr;
    std::atomic<ComponentInstance> running_ = nullptr;
};

template <typename Call>
OSAError GenericComponent::run(ComponentInstance instance, Call call) {
    const ComponentInstance before = running_.exchange(instance);
    const OSAError status = call(instance);
    running_.store(before);
    if (status != noErr) noteFailure(instance, status);
    return status;
}

}  // namespace osa
