// Descriptors from values of scripts.
#include <CoreServices/AEObjects.h>
#include <CoreServices/MacErrors.h>

#include <cmath>

#include "platform/osa/javascript/Text.h"
#include "platform/osa/javascript/values/HostObjects.h"
#include "platform/osa/javascript/values/Values.h"

namespace osa::script {
namespace {

/// Objects that share parts may be small and yet stand for any number of values.
constexpr int kMostValues = 1'000'000;
/// Each more is looked for among all that are there.
constexpr int kMostKeywords = 500;
/// What an item of a list has besides its data.
constexpr std::size_t kItem = 16;
constexpr OSErr kThrown = errOSAScriptError;

bool isWhole(double number) {
    return number == std::trunc(number) && std::abs(number) <= 2147483648.0 &&
           number != 2147483648.0 && !(number == 0 && std::signbit(number));
}

class Writer {
  public:
    explicit Writer(Host& host) : host_(host), cx_(host.context()) {}

    OSErr write(JS::HandleValue value, AEDesc* desc) {
        if (++count_ > kMostValues || depth_ == kDeepest) return errAECoercionFail;
        if (!spend(kItem)) return memFullErr;
        if (!JS_CheckForInterrupt(cx_)) return kThrown;
        ++depth_;
        const OSErr status = any(value, desc);
        --depth_;
        return status;
    }

  private:
    /// Counts what is copied before that is done.
    bool spend(std::size_t bytes) {
        spent_ += bytes;
        return host_.affords(spent_);
    }
    /// A string that is not flat may stand for any number of others.
    bool spend(JSString* string) { return spend(JS_GetStringLength(string) * sizeof(char16_t)); }

    OSErr any(JS::HandleValue value, AEDesc* desc) {
        if (value.isNull()) return code(cMissingValue, desc);
        if (value.isUndefined()) return code('undf', desc);
        if (value.isBoolean())
            return AECreateDesc(value.toBoolean() ? typeTrue : typeFalse, nullptr, 0, desc);
        if (value.isNumber()) return number(value.toNumber(), desc);
        if (value.isString()) return text(value.toString(), desc);
        if (value.isBigInt()) return wide(value.toBigInt(), desc);
        if (!value.isObject()) return errAECoercionFail;
        JS::RootedObject object(cx_, &value.toObject());
        return fromObject(object, desc);
    }

    static OSErr code(OSType which, AEDesc* desc) {
        return AECreateDesc(typeType, &which, sizeof which, desc);
    }

    static OSErr number(double amount, AEDesc* desc) {
        if (!isWhole(amount))
            return AECreateDesc(typeIEEE64BitFloatingPoint, &amount, sizeof amount, desc);
        const auto whole = static_cast<SInt32>(amount);
        return AECreateDesc(typeSInt32, &whole, sizeof whole, desc);
    }

    OSErr text(JSString* text, AEDesc* desc) {
        JS::RootedString string(cx_, text);
        if (!spend(string)) return memFullErr;
        std::u16string characters;
        if (!toText(cx_, string, &characters)) return kThrown;
        return answerText(characters, typeUnicodeText, desc);
    }

    static OSErr wide(JS::BigInt* number, AEDesc* desc) {
        SInt64 amount = 0;
        if (JS::BigIntFits(number, &amount))
            return AECreateDesc(typeSInt64, &amount, sizeof amount, desc);
        UInt64 natural = 0;
        if (JS::BigIntFits(number, &natural))
            return AECreateDesc(typeUInt64, &natural, sizeof natural, desc);
        return errAECoercionFail;
    }

    OSErr fromObject(JS::HandleObject object, AEDesc* desc) {
        if (const AEDesc* const held = heldDescriptor(object)) {
            const bool affords = spend(static_cast<std::size_t>(AEGetDescDataSize(held)));
            return affords ? AEDuplicateDesc(held, desc) : OSErr(memFullErr);
        }
        if (JS::IsArrayBufferObject(object) || JS_IsArrayBufferViewObject(object))
            return bytes(object, desc);
        js::ESClass kind = js::ESClass::Other;
        if (!JS::GetBuiltinClass(cx_, object, &kind)) return kThrown;
        switch (kind) {
            case js::ESClass::Array:
                return list(object, desc);
            case js::ESClass::Date:
                return date(object, desc);
            case js::ESClass::Object:
            case js::ESClass::Error:
                return record(object, desc);
            case js::ESClass::Boolean:
            case js::ESClass::Number:
            case js::ESClass::String:
            case js::ESClass::BigInt:
                return unboxed(object, desc);
            default:
                return errAECoercionFail;
        }
    }

    OSErr unboxed(JS::HandleObject object, AEDesc* desc) {
        JS::RootedValueArray<1> arguments(cx_);
        arguments[0].setObject(*object);
        JS::RootedValue inner(cx_);
        if (!host_.ask("unboxed", arguments, &inner)) return kThrown;
        return any(inner, desc);
    }

    OSErr bytes(JSObject* object, AEDesc* desc) {
        bool shared = false;
        std::size_t size = 0;
        std::uint8_t* data = nullptr;
        if (JS::IsArrayBufferObject(object)) {
            JS::GetArrayBufferLengthAndData(object, &size, &shared, &data);
        } else {
            js::GetArrayBufferViewLengthAndData(object, &size, &shared, &data);
        }
        if (size > 0x7FFFFFFF || !spend(size)) return memFullErr;
        return AECreateDesc('rdat', data, static_cast<Size>(size), desc);
    }

    OSErr date(JS::HandleObject object, AEDesc* desc) {
        JS::RootedValueArray<1> arguments(cx_);
        arguments[0].setObject(*object);
        JS::RootedValue local(cx_);
        if (!host_.ask("toLocal", arguments, &local)) return kThrown;
        if (!local.isNumber()) return errAECoercionFail;
        const double milliseconds = local.toNumber();
        if (std::isnan(milliseconds)) return errAECoercionFail;
        const auto seconds = static_cast<SInt64>(std::floor(milliseconds / 1000) + kEpoch);
        return AECreateDesc(typeLongDateTime, &seconds, sizeof seconds, desc);
    }

    OSErr list(JS::HandleObject array, AEDesc* desc) {
        std::uint32_t length = 0;
        if (!JS::GetArrayLength(cx_, array, &length)) return kThrown;
        Desc items;
        OSErr status = AECreateList(nullptr, 0, false, items.out());
        JS::RootedValue value(cx_);
        for (std::uint32_t index = 0; status == noErr && index < length; ++index) {
            Desc item;
            status = JS_GetElement(cx_, array, index, &value) ? write(value, item.out()) : kThrown;
            if (status == noErr) status = AEPutDesc(&items.desc, 0, &item.desc);
        }
        if (status == noErr) items.release(desc);
        return status;
    }

    /// A name of four characters is a keyword, unless there are too many; the others go under
    /// 'usrf', with their values by turns.
    static OSErr putField(std::u16string_view name, const AEDesc& value, AEDesc* record,
                          AEDesc* others) {
        FourCharCode keyword = 0;
        SInt32 count = 0;
        AECountItems(record, &count);
        if (count < kMostKeywords && textCode(name, &keyword) && keyword != 'usrf' &&
            keyword != typeWildCard)
            return AEPutParamDesc(record, keyword, &value);
        const auto size = static_cast<Size>(name.size() * sizeof(char16_t));
        const OSErr status = AEPutPtr(others, 0, typeUnicodeText, name.data(), size);
        return status == noErr ? AEPutDesc(others, 0, &value) : status;
    }

    OSErr field(JS::HandleObject object, JS::HandleId id, AEDesc* record, AEDesc* others) {
        JS::RootedValue value(cx_), key(cx_);
        if (!JS_GetPropertyById(cx_, object, id, &value) || !JS_IdToValue(cx_, id, &key))
            return kThrown;
        JS::RootedString name(cx_, JS::ToString(cx_, key));
        std::u16string characters;
        if (name == nullptr) return kThrown;
        if (!spend(name)) return memFullErr;
        if (!toText(cx_, name, &characters)) return kThrown;
        Desc item;
        const OSErr status = write(value, item.out());
        return status == noErr ? putField(characters, item.desc, record, others) : status;
    }

    OSErr record(JS::HandleObject object, AEDesc* desc) {
        JS::Rooted<JS::IdVector> ids(cx_, JS::IdVector(cx_));
        if (!JS_Enumerate(cx_, object, &ids)) return kThrown;
        Desc fields, others;
        OSErr status = AECreateList(nullptr, 0, true, fields.out());
        if (status == noErr) status = AECreateList(nullptr, 0, false, others.out());
        JS::RootedId id(cx_);
        for (std::size_t i = 0; status == noErr && i < ids.length(); ++i) {
            id = ids[i];
            status = field(object, id, &fields.desc, &others.desc);
        }
        SInt32 count = 0;
        if (status == noErr) status = AECountItems(&others.desc, &count);
        if (status == noErr && count != 0)
            status = AEPutParamDesc(&fields.desc, 'usrf', &others.desc);
        if (status == noErr) fields.release(desc);
        return status;
    }

    Host& host_;
    JSContext* const cx_;
    int depth_ = 0;
    int count_ = 0;
    std::size_t spent_ = 0;
};

}  // namespace

OSErr toDesc(Host& host, JS::HandleValue value, AEDesc* desc) {
    return Writer(host).write(value, desc);
}

DescType naturalType(JSContext* cx, JS::HandleValue value) {
    if (value.isNullOrUndefined()) return typeType;
    if (value.isBoolean()) return value.toBoolean() ? typeTrue : typeFalse;
    if (value.isNumber())
        return isWhole(value.toNumber()) ? typeSInt32 : typeIEEE64BitFloatingPoint;
    if (value.isString()) return typeUnicodeText;
    if (value.isBigInt()) return typeSInt64;
    if (!value.isObject()) return typeWildCard;
    JS::RootedObject object(cx, &value.toObject());
    if (const AEDesc* const held = heldDescriptor(object)) return held->descriptorType;
    if (JS::IsArrayBufferObject(object) || JS_IsArrayBufferViewObject(object)) return 'rdat';
    js::ESClass kind = js::ESClass::Other;
    if (!JS::GetBuiltinClass(cx, object, &kind)) JS_ClearPendingException(cx);
    if (kind == js::ESClass::Array) return typeAEList;
    if (kind == js::ESClass::Date) return typeLongDateTime;
    if (kind == js::ESClass::String) return typeUnicodeText;
    const bool isRecord = kind == js::ESClass::Object || kind == js::ESClass::Error;
    return isRecord ? DescType(typeAERecord) : DescType(typeWildCard);
}

}  // namespace osa::script
