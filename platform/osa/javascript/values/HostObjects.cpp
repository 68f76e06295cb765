// Descriptors that JavaScript has no value for, as objects.
#include "platform/osa/javascript/values/HostObjects.h"

#include <CoreServices/AEHelpers.h>
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/osa/javascript/Text.h"

namespace osa::script {
namespace {

constexpr std::size_t kHeld = 0;

void finalize(JS::GCContext*, JSObject* object) {
    delete JS::GetMaybePtrFromReservedSlot<Desc>(object, kHeld);
}

constexpr JSClassOps kOps = {nullptr, nullptr,  nullptr, nullptr, nullptr,
                             nullptr, finalize, nullptr, nullptr, nullptr};
constexpr std::uint32_t kFlags = JSCLASS_HAS_RESERVED_SLOTS(1) | JSCLASS_FOREGROUND_FINALIZE;
constexpr JSClass kFile = {"File", kFlags, &kOps, nullptr, nullptr, nullptr};
constexpr JSClass kDescriptor = {"Descriptor", kFlags, &kOps, nullptr, nullptr, nullptr};

/// The descriptor of the object that a method is called on; null with an exception pending.
const AEDesc* heldByThis(JSContext* cx, const JS::CallArgs& args) {
    const AEDesc* const desc =
        args.thisv().isObject() ? heldDescriptor(&args.thisv().toObject()) : nullptr;
    if (desc == nullptr) JS_ReportErrorASCII(cx, "not an object that holds a descriptor");
    return desc;
}

bool answerString(JSContext*, const JS::CallArgs& args, JSString* string) {
    if (string == nullptr) return false;
    args.rval().setString(string);
    return true;
}

/// Null when there is no such file.
JSString* pathOf(JSContext* cx, const AEDesc& desc) {
    Desc reference;
    FSRef file;
    UInt8 path[4096];
    if (AECoerceDesc(&desc, typeFSRef, reference.out()) != noErr ||
        AEGetDescData(&reference.desc, &file, sizeof file) != noErr ||
        FSRefMakePath(&file, path, sizeof path) != noErr)
        return nullptr;
    const char* const text = reinterpret_cast<const char*>(path);
    return JS_NewStringCopyUTF8Z(cx, JS::ConstUTF8CharsZ(text, std::strlen(text)));
}

JSString* printed(JSContext* cx, const AEDesc& desc) {
    Handle text = nullptr;
    if (AEPrintDescToHandle(&desc, &text) != noErr) {
        JS_ReportOutOfMemory(cx);
        return nullptr;
    }
    JSString* const string =
        JS_NewStringCopyUTF8Z(cx, JS::ConstUTF8CharsZ(*text, std::strlen(*text)));
    DisposeHandle(text);
    return string;
}

/// What a method does with the descriptor; nothing may be thrown through the engine.
template <bool (*Answer)(JSContext*, const JS::CallArgs&, const AEDesc&)>
bool method(JSContext* cx, unsigned count, JS::Value* values) {
    const JS::CallArgs args = JS::CallArgsFromVp(count, values);
    const AEDesc* const desc = heldByThis(cx, args);
    try {
        return desc != nullptr && Answer(cx, args, *desc);
    } catch (const std::bad_alloc&) {
        JS_ReportOutOfMemory(cx);
        return false;
    }
}

bool answerPath(JSContext* cx, const JS::CallArgs& args, const AEDesc& desc) {
    args.rval().setNull();
    JSString* const path = pathOf(cx, desc);
    return path == nullptr ? !JS_IsExceptionPending(cx) : answerString(cx, args, path);
}

bool answerPathOrText(JSContext* cx, const JS::CallArgs& args, const AEDesc& desc) {
    return answerPath(cx, args, desc) &&
           (args.rval().isString() || answerString(cx, args, printed(cx, desc)));
}

bool answerPrinted(JSContext* cx, const JS::CallArgs& args, const AEDesc& desc) {
    return answerString(cx, args, printed(cx, desc));
}

bool answerType(JSContext* cx, const JS::CallArgs& args, const AEDesc& desc) {
    return answerString(cx, args, toString(cx, codeText(desc.descriptorType)));
}

bool answerData(JSContext* cx, const JS::CallArgs& args, const AEDesc& desc) {
    JSObject* const bytes = newByteArray(cx, desc);
    args.rval().setObjectOrNull(bytes);
    return bytes != nullptr;
}

const JSPropertySpec kFileProperties[] = {JS_PSG("path", method<answerPath>, JSPROP_ENUMERATE),
                                          JS_STRING_SYM_PS(toStringTag, "File", JSPROP_READONLY),
                                          JS_PS_END};
const JSFunctionSpec kFileMethods[] = {JS_FN("toString", method<answerPathOrText>, 0, 0),
                                       JS_FS_END};
const JSPropertySpec kDescriptorProperties[] = {
    JS_PSG("type", method<answerType>, JSPROP_ENUMERATE),
    JS_PSG("data", method<answerData>, JSPROP_ENUMERATE),
    JS_STRING_SYM_PS(toStringTag, "Descriptor", JSPROP_READONLY), JS_PS_END};
const JSFunctionSpec kDescriptorMethods[] = {JS_FN("toString", method<answerPrinted>, 0, 0),
                                             JS_FS_END};

JSObject* newPrototype(JSContext* cx, const JSPropertySpec* properties,
                       const JSFunctionSpec* methods) {
    JS::RootedObject prototype(cx, JS_NewPlainObject(cx));
    if (prototype == nullptr || !JS_DefineProperties(cx, prototype, properties) ||
        !JS_DefineFunctions(cx, prototype, methods))
        return nullptr;
    return prototype;
}

}  // namespace

bool isFileType(DescType type) {
    return type == typeFileURL || type == typeAlias || type == typeFSRef || type == typeFSS;
}

JSObject* newFilePrototype(JSContext* cx) {
    return newPrototype(cx, kFileProperties, kFileMethods);
}

JSObject* newDescriptorPrototype(JSContext* cx) {
    return newPrototype(cx, kDescriptorProperties, kDescriptorMethods);
}

JSObject* newHostObject(JSContext* cx, const AEDesc& desc, JS::HandleObject prototype) {
    auto held = std::make_unique<Desc>();
    if (AEDuplicateDesc(&desc, held->out()) != noErr) {
        JS_ReportOutOfMemory(cx);
        return nullptr;
    }
    const bool file = isFileType(desc.descriptorType);
    JSObject* const object =
        JS_NewObjectWithGivenProto(cx, file ? &kFile : &kDescriptor, prototype);
    if (object != nullptr) JS::SetReservedSlot(object, kHeld, JS::PrivateValue(held.release()));
    return object;
}

const AEDesc* heldDescriptor(JSObject* object) {
    const JSClass* const kind = JS::GetClass(object);
    if (kind != &kFile && kind != &kDescriptor) return nullptr;
    const Desc* const held = JS::GetMaybePtrFromReservedSlot<Desc>(object, kHeld);
    return held == nullptr ? nullptr : &held->desc;
}

JSObject* newByteArray(JSContext* cx, const AEDesc& desc) {
    const Size size = AEGetDescDataSize(&desc);
    JS::RootedObject array(cx, JS_NewUint8Array(cx, static_cast<std::size_t>(size)));
    if (array == nullptr) return nullptr;
    JS::AutoCheckCannotGC noCollection;
    bool shared = false;
    AEGetDescData(&desc, JS_GetUint8ArrayData(array, &shared, noCollection), size);
    return array;
}

}  // namespace osa::script
