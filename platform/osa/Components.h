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
    UInt32 magic = 0;  ///< what tells an open one
    ComponentRecord* component = nullptr;
    const OSAComponentCalls* calls = nullptr;
    void* storage = nullptr;
    std::atomic<int> running = 0;  ///< calls
};

namespace osa {

/// Whether `instance` is an open one, as far as can be told.
bool isInstance(ComponentInstance instance);

/// A call of an instance. One that is closed by what the call causes ends with the outermost call.
class InstanceInUse {
  public:
    explicit InstanceInUse(ComponentInstance instance) : instance_(instance) {
        ++instance->running;
    }
    ~InstanceInUse();
    InstanceInUse(const InstanceInUse&) = delete;
    InstanceInUse& operator=(const InstanceInUse&) = delete;

  private:
    ComponentInstance instance_;
};

/// The first component of the subtype; null when there is none.
Component findScriptingComponent(OSType subType);
/// The first that is not the generic one; 0 when there is none.
OSType firstScriptingSubType();

/// The generic component's table.
const OSAComponentCalls& genericCalls();

}  // namespace osa
