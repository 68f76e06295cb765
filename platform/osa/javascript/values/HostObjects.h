// Descriptors that JavaScript has no value for, as objects: File and Descriptor.
//
// File has `path`, null when nothing is there; Descriptor has `type`, four characters, and `data`,
// a Uint8Array. Both show themselves as text and give back the descriptor as it was.
#pragma once

#include <CoreServices/AEDataModel.h>

#include "platform/osa/javascript/machine/Engine.h"

namespace osa::script {

/// Whether descriptors of the type name files.
bool isFileType(DescType type);
/// The prototypes; null with an exception pending. A realm is entered.
JSObject* newFilePrototype(JSContext* cx);
JSObject* newDescriptorPrototype(JSContext* cx);
/// An object that holds a copy of `desc`; null with an exception pending.
JSObject* newHostObject(JSContext* cx, const AEDesc& desc, JS::HandleObject prototype);
/// What such an object holds; null for any other.
const AEDesc* heldDescriptor(JSObject* object);
/// A Uint8Array with a copy of the data; null with an exception pending.
JSObject* newByteArray(JSContext* cx, const AEDesc& desc);

}  // namespace osa::script
