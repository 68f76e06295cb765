// Values of scripts from descriptors.
#include <CoreServices/AEObjects.h>
#include <CoreServices/MacErrors.h>

#include <cmath>

#include "platform/osa/javascript/Text.h"
#include "platform/osa/javascript/values/HostObjects.h"
#include "platform/osa/javascript/values/Values.h"

namespace osa::script {
namespace {

/// Integers up to here are numbers without loss.
constexpr SInt64 kExact = SInt64{1} << 53;

constexpr OSErr kThrown = errOSAScriptError;

template <typename T>
OSErr dataOf(const AEDesc& desc, T* value) {
    if (AEGetDescDataSize(&desc) != static_cast<Size>(sizeof *value)) return errAECoercionFail;
    return AEGetDescData(&desc, value, sizeof *value);
}

bool isText(DescType type) {
    switch (type) {
        case typeChar:
        case typeUnicodeText:
        case typeUTF8Text:
        case typeUTF16ExternalRepresentation:
        case typeIntlText:
        case typeStyledText:
        case typeStyledUnicodeText:
        case typeEncodedString:
        case typeCString:
        case typePString:
            return true;
        default:
            return false;
    }
}

bool isNumber(DescType type) {
    switch (type) {
        case typeSInt16:
        case typeUInt16:
        case typeSInt32:
        case typeUInt32:
        case typeIEEE32BitFloatingPoint:
        case typeIEEE64BitFloatingPoint:
        case typeFixed:
            return true;
        default:
            return false;
    }
}

class Reader {
  public:
    explicit Reader(Host& host) : host_(host), cx_(host.context()) {}

    OSErr read(const AEDesc& desc, JS::MutableHandleValue value) {
        const DescType type = desc.descriptorType;
        if (isText(type)) return text(desc, value);
        if (isNumber(type)) return number(desc, value);
        switch (type) {
            case typeNull:
                value.setNull();
                return noErr;
            case typeTrue:
            case typeFalse:
                value.setBoolean(type == typeTrue);
                return noErr;
            case typeBoolean:
                return boolean(desc, value);
            case typeSInt64:
            case typeUInt64:
                return wide(desc, value);
            case typeType:
                return typeCode(desc, value);
            case typeLongDateTime:
                return date(desc, value);
            case 'rdat':
                return object(newByteArray(cx_, desc), value);
            case typeAEList:
                return list(desc, value);
            case typeAERecord:
                return record(desc, value);
            default:
                return opaque(desc, value);
        }
    }

  private:
    OSErr object(JSObject* made, JS::MutableHandleValue value) {
        if (made == nullptr) return kThrown;
        value.setObject(*made);
        return noErr;
    }

    OSErr opaque(const AEDesc& desc, JS::MutableHandleValue value) {
        JS::RootedObject prototype(cx_, host_.heldPrototype(isFileType(desc.descriptorType)));
        if (prototype == nullptr) return object(nullptr, value);
        return object(newHostObject(cx_, desc, prototype), value);
    }

    OSErr text(const AEDesc& desc, JS::MutableHandleValue value) {
        std::u16string characters;
        if (const OSErr status = textOf(desc, &characters); status != noErr) return status;
        JSString* const string = toString(cx_, characters);
        if (string == nullptr) return kThrown;
        value.setString(string);
        return noErr;
    }

    OSErr number(const AEDesc& desc, JS::MutableHandleValue value) {
        Desc real;
        double amount = 0;
        OSErr status = AECoerceDesc(&desc, typeIEEE64BitFloatingPoint, real.out());
        if (status == noErr) status = dataOf(real.desc, &amount);
        value.set(JS::CanonicalizedDoubleValue(amount));
        return status;
    }

    OSErr boolean(const AEDesc& desc, JS::MutableHandleValue value) {
        Boolean flag = 0;
        const OSErr status = dataOf(desc, &flag);
        value.setBoolean(flag != 0);
        return status;
    }

    OSErr wide(const AEDesc& desc, JS::MutableHandleValue value) {
        UInt64 bits = 0;
        if (const OSErr status = dataOf(desc, &bits); status != noErr) return status;
        const bool isSigned = desc.descriptorType == typeSInt64;
        const auto amount = static_cast<SInt64>(bits);
        if (isSigned ? amount >= -kExact && amount <= kExact : bits <= UInt64{kExact}) {
            value.setNumber(static_cast<double>(amount));
            return noErr;
        }
        JS::BigInt* const exact =
            isSigned ? JS::NumberToBigInt(cx_, amount) : JS::NumberToBigInt(cx_, bits);
        if (exact == nullptr) return kThrown;
        value.setBigInt(exact);
        return noErr;
    }

    OSErr typeCode(const AEDesc& desc, JS::MutableHandleValue value) {
        OSType code = 0;
        if (const OSErr status = dataOf(desc, &code); status != noErr) return status;
        if (code == cMissingValue) {
            value.setNull();
        } else if (code == 'undf') {
            value.setUndefined();
        } else {
            return opaque(desc, value);
        }
        return noErr;
    }

    OSErr date(const AEDesc& desc, JS::MutableHandleValue value) {
        SInt64 seconds = 0;
        if (const OSErr status = dataOf(desc, &seconds); status != noErr) return status;
        const double local = (static_cast<double>(seconds) - kEpoch) * 1000;
        if (std::abs(local) > 8.64e15) return opaque(desc, value);
        const double inDay = std::fmod(std::fmod(local, 864e5) + 864e5, 864e5) / 1000;
        const int second = static_cast<int>(inDay);
        return object(JS::NewDateObject(cx_, static_cast<int>(JS::YearFromTime(local)),
                                        static_cast<int>(JS::MonthFromTime(local)),
                                        static_cast<int>(JS::DayFromTime(local)), second / 3600,
                                        second / 60 % 60, second % 60),
                      value);
    }

    /// Each item of a list or record, with its keyword.
    template <typename Put>
    OSErr eachOf(const AEDesc& desc, Put put) {
        SInt32 count = 0;
        OSErr status = AECountItems(&desc, &count);
        for (SInt32 index = 1; status == noErr && index <= count; ++index) {
            Desc item;
            AEKeyword keyword = 0;
            JS::RootedValue value(cx_);
            status = AEGetNthDesc(&desc, index, typeWildCard, &keyword, item.out());
            if (status == noErr) status = put(index, keyword, item.desc);
        }
        return status;
    }

    template <typename Put>
    OSErr eachItem(const AEDesc& desc, Put put) {
        if (depth_ == kDeepest) return errAECoercionFail;
        ++depth_;
        const OSErr status = eachOf(desc, put);
        --depth_;
        return status;
    }

    OSErr list(const AEDesc& desc, JS::MutableHandleValue value) {
        JS::RootedObject array(cx_, JS::NewArrayObject(cx_, 0));
        if (array == nullptr) return kThrown;
        value.setObject(*array);
        return eachItem(desc, [&](SInt32 index, AEKeyword, const AEDesc& item) -> OSErr {
            JS::RootedValue element(cx_);
            if (const OSErr status = read(item, &element); status != noErr) return status;
            const auto place = static_cast<std::uint32_t>(index - 1);
            return JS_DefineElement(cx_, array, place, element, JSPROP_ENUMERATE) ? OSErr(noErr)
                                                                                  : kThrown;
        });
    }

    OSErr put(JS::HandleObject object, const std::u16string& name, const AEDesc& desc) {
        JS::RootedValue value(cx_);
        if (const OSErr status = read(desc, &value); status != noErr) return status;
        // By ID: a name may be an index.
        JS::RootedString string(cx_, toString(cx_, name));
        JS::RootedId id(cx_);
        if (string == nullptr || !JS_StringToId(cx_, string, &id) ||
            !JS_DefinePropertyById(cx_, object, id, value, JSPROP_ENUMERATE))
            return kThrown;
        return noErr;
    }

    /// Names and values by turns. The list is a part of the record, no level of its own.
    OSErr userFields(JS::HandleObject object, const AEDesc& fields) {
        std::u16string name;
        return eachOf(fields, [&](SInt32 index, AEKeyword, const AEDesc& item) {
            return index % 2 == 1 ? textOf(item, &name) : put(object, name, item);
        });
    }

    OSErr record(const AEDesc& desc, JS::MutableHandleValue value) {
        JS::RootedObject object(cx_, JS_NewPlainObject(cx_));
        if (object == nullptr) return kThrown;
        value.setObject(*object);
        return eachItem(desc, [&](SInt32, AEKeyword keyword, const AEDesc& item) {
            if (keyword == 'usrf' && item.descriptorType == typeAEList)
                return userFields(object, item);
            return put(object, codeText(keyword), item);
        });
    }

    Host& host_;
    JSContext* const cx_;
    int depth_ = 0;
};

}  // namespace

OSErr fromDesc(Host& host, const AEDesc& desc, JS::MutableHandleValue value) {
    return Reader(host).read(desc, value);
}

}  // namespace osa::script
