// The modifier keys of the event that a thread handles, as its host tells them.
#include <CoreServices/Events.h>
#include <OSA/HostEvents.h>

namespace osa {
namespace {

constexpr UInt32 kKnownKeys = cmdKey | shiftKey | alphaLock | optionKey | controlKey;

thread_local UInt32 currentKeys = 0;

}  // namespace
}  // namespace osa

UInt32 GetCurrentEventKeyModifiers(void) {
    return osa::currentKeys;
}

void OSASetCurrentEventKeyModifiers(UInt32 modifiers) {
    osa::currentKeys = modifiers & osa::kKnownKeys;
}
