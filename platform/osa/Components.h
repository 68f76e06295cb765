// The register of components, and what an instance is made of.
#pragma once

#include <OSA/ScriptingComponents.h>

#include <atomic>
#include <cstddef>
#include <string>

/// Filled when it is registered; what changes later is under the register's lock.
struct ComponentRecord {
    OSType subType = 0;
    std::string name;     ///< UTF-8
    std::string library;  ///< the file that has the table, when it is not there yet
    const OSAComponentCalls* calls = nullptr;
    std::size_t instances = 0;
};

struct ComponentInstanceRecord {
    /// What tells an open one, or a closed one, and how many use it. Who makes it one that is
    /// closed and not used ends it.
    std::atomic<UInt64> state = 0;
    ComponentRecord* component = nullptr;
    const OSAComponentCalls* calls = nullptr;
    void* storage = nullptr;
};

namespace osa {

/// Whether `instance` is an open one, as far as can be told.
bool isInstance(ComponentInstance instance);

/// A call of an instance. One that is closed meanwhile ends with the last of its calls.
class InstanceInUse {
  public:
    explicit InstanceInUse(ComponentInstance instance);
    ~InstanceInUse();
    InstanceInUse(const InstanceInUse&) = delete;
    InstanceInUse& operator=(const InstanceInUse&) = delete;

    /// False when the instance is no open one.
    explicit operator bool() const { return instance_ != nullptr; }
    /// Whether a call of it is under way on this thread.
    static bool isHere(ComponentInstance instance);

  private:
    ComponentInstance instance_ = nullptr;
    const InstanceInUse* const outer_;  ///< of this thread
};

/// The first component of the subtype; null when there is none.
Component findScriptingComponent(OSType subType);
/// The first that is not the generic one; 0 when there is none.
OSType firstScriptingSubType();

/// The generic component's table.
const OSAComponentCalls& genericCalls();

}  // namespace osa
