// An event as the first one of a launched program.
#include <CoreServices/Processes.h>

#include <cstring>
#include <string>

#include "platform/events/coercions/BuiltInCoercions.h"
#include "platform/events/coercions/CoercionData.h"

namespace osa {
namespace {

constexpr UInt16 kHighLevelEvent = 23;

/// An attribute that every event has.
UInt32 codeOf(const AEDesc* event, AEKeyword attribute) {
    DescType type = 0;
    UInt32 code = 0;
    Size size = 0;
    AEGetAttributePtr(event, attribute, typeType, &type, &code, sizeof code, &size);
    return code;
}

}  // namespace

OSErr eventToAppParameters(const AEDesc* from, DescType toType, AEDesc* result) {
    const Size size = AESizeOfFlattenedDesc(from);
    if (size <= 0) return errAECoercionFail;
    const UInt32 eventID = codeOf(from, keyEventIDAttr);
    AppParameters parameters{};
    parameters.theMsgEvent.what = kHighLevelEvent;
    parameters.theMsgEvent.message = codeOf(from, keyEventClassAttr);
    parameters.theMsgEvent.when = TickCount();
    parameters.theMsgEvent.where.v = static_cast<SInt16>(eventID >> 16);
    parameters.theMsgEvent.where.h = static_cast<SInt16>(eventID);
    parameters.messageLength = static_cast<UInt32>(size);
    std::string bytes(sizeof parameters + static_cast<std::size_t>(size), '\0');
    std::memcpy(bytes.data(), &parameters, sizeof parameters);
    Size used = 0;
    const OSStatus status = AEFlattenDesc(from, bytes.data() + sizeof parameters, size, &used);
    return status != noErr ? static_cast<OSErr>(status) : makeDesc(toType, bytes, result);
}

}  // namespace osa
