// The generic scripting component: opening components, and finding the one that a script is for.
#include "platform/osa/GenericComponent.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/osa/Components.h"
#include "platform/osa/StoredScripts.h"

namespace osa {

GenericComponent::GenericComponent() : default_(firstScriptingSubType()) {}

GenericComponent::~GenericComponent() {
    for (const Open& open : open_) CloseComponent(open.instance);
}

Result<void> GenericComponent::setDefault(OSType subType) {
    if (subType == kOSAGenericScriptingComponentSubtype ||
        findScriptingComponent(subType) == nullptr)
        return Failure(errOSACantOpenComponent);
    default_ = subType;
    return {};
}

Result<ComponentInstance> GenericComponent::instanceOf(OSType subType) {
    const auto known = std::find_if(open_.begin(), open_.end(),
                                    [&](const Open& open) { return open.subType == subType; });
    if (known != open_.end()) return known->instance;
    // one of the generic component in itself would answer for ever
    const Component component =
        subType == kOSAGenericScriptingComponentSubtype ? nullptr : findScriptingComponent(subType);
    open_.reserve(open_.size() + 1);
    const ComponentInstance instance = component == nullptr ? nullptr : OpenComponent(component);
    if (instance == nullptr) return Failure(errOSACantOpenComponent);
    open_.push_back({subType, instance});
    return instance;
}

Result<ComponentInstance> GenericComponent::instanceFor(const AEDesc& stored) {
    if (stored.descriptorType != typeOSAGenericStorage) {
        if (findScriptingComponent(stored.descriptorType) == nullptr)
            return Failure(errOSABadStorageType);
        return instanceOf(stored.descriptorType);
    }
    OSType subType = 0;
    const OSAError status = storedSubType(stored, subType);
    if (status != noErr) return Failure(status);
    return instanceOf(subType);
}

bool GenericComponent::owns(ComponentInstance instance) const {
    return std::any_of(open_.begin(), open_.end(),
                       [&](const Open& open) { return open.instance == instance; });
}

Result<RealID> GenericComponent::real(OSAID id) const {
    const RealID* const known = ids_.find(id);
    if (known == nullptr) return Failure(errOSAInvalidID);
    return *known;
}

Result<RealID> GenericComponent::realOrDefault(OSAID id) {
    if (id != kOSANullScript) return real(id);
    OSA_TRY(const ComponentInstance instance, defaultInstance());
    return RealID{instance, kOSANullScript};
}

void GenericComponent::noteFailure(ComponentInstance instance, OSAError status) {
    // other statuses tell nothing that could be asked for
    if (status == errOSAScriptError) failed_ = instance;
}

OSAError storedSubType(const AEDesc& stored, OSType& subType) {
    if (stored.descriptorType != typeOSAGenericStorage || stored.dataHandle == nullptr)
        return errOSABadStorageType;
    const auto size = static_cast<std::size_t>(AEGetDescDataSize(&stored));
    const auto script =
        parseStoredScript({reinterpret_cast<const std::byte*>(*stored.dataHandle), size});
    if (script) subType = script->subType;
    return script.status();
}

}  // namespace osa
