// AECoerceDesc and AECoercePtr: duplicates, installed handlers, and the manager's own table.
#include <CoreServices/AEDataModel.h>

#include <new>

#include "platform/events/coercions/CoercionData.h"
#include "platform/events/coercions/CoercionHandlers.h"
#include "platform/events/coercions/CoercionTable.h"

namespace osa {
namespace {

OSErr coerceBuiltIn(CoercionSource& source, DescType toType, AEDesc* result) {
    const Coercion coercion = findCoercion(source.type(), toType);
    if (coercion == nullptr) return errAECoercionFail;
    const AEDesc* desc = nullptr;
    const OSErr status = source.asDesc(&desc);
    return status != noErr ? status : coercion(desc, toType, result);
}

/// For a target that is another type. `result` may be the source itself: it is written last.
OSErr coerce(CoercionSource& source, DescType toType, AEDesc* result) {
    AEDesc made = {typeNull, nullptr};
    OSErr status = errAECoercionFail;
    try {
        if (const CoercionLevel level; !level.isTooDeep()) {
            status = coerceWithHandlers(source, toType, &made);
            if (status == errAECoercionFail) status = coerceBuiltIn(source, toType, &made);
        }
    } catch (const std::bad_alloc&) {
        status = memFullErr;
    }
    *result = made;
    return status;
}

}  // namespace
}  // namespace osa

OSErr AECoerceDesc(const AEDesc* desc, DescType toType, AEDesc* result) {
    if (desc == nullptr || result == nullptr) return paramErr;
    if (toType == desc->descriptorType || toType == typeWildCard) {
        return AEDuplicateDesc(desc, result);
    }
    osa::CoercionSource source(desc);
    return osa::coerce(source, toType, result);
}

OSErr AECoercePtr(DescType type, const void* data, Size size, DescType toType, AEDesc* result) {
    if (result == nullptr) return paramErr;
    *result = {typeNull, nullptr};
    if (size < 0 || (data == nullptr && size > 0)) return paramErr;
    if (toType == type || toType == typeWildCard) return AECreateDesc(type, data, size, result);
    osa::CoercionSource source(type, data, size);
    return osa::coerce(source, toType, result);
}
