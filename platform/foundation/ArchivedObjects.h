// Turns the objects of an archive into Core Foundation objects, by what is known of their classes.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFRef.h>

#include <optional>
#include <span>
#include <string_view>

#include "platform/base/ByteReader.h"

namespace osa {

/// The classes that property lists are made of. A subclass counts as the nearest of these among its
/// ancestors, so private classes and mutable ones need no mention.
enum class ArchivedClass : UInt8 {
    unknown,
    string,
    dictionary,
    array,  // and sets, which property lists do not have
    number,
    date,
    data,
    url,
    attributedString,
};

ArchivedClass archivedClassNamed(std::string_view name);

/// What an archived object has become. No object: it is of no use to a property list, or not
/// finished.
struct ConvertedObject {
    CFRef<CFTypeRef> object;
    UInt32 height = 0;  ///< levels of containers
    UInt64 weight = 0;  ///< bytes, roughly, that it would take written out without any sharing
};

/// One value that an object was archived with.
struct ArchivedValue {
    enum class Kind : UInt8 { nothing, integer, real, bytes, object };
    Kind kind = Kind::nothing;
    char code = 0;  ///< its type encoding
    union {
        SInt64 integer;
        double real;
        const ConvertedObject* object = nullptr;  ///< null for nil
    };
    ByteSpan bytes;  ///< bytes, strings of any kind: a view of the archive
};

/// The object that `values` make for a class. An unknown class, or contents that another class of
/// the same ancestry must have written, give an empty result; contents that contradict themselves,
/// none.
std::optional<ConvertedObject> convertArchived(ArchivedClass archivedClass,
                                               std::span<const ArchivedValue> values);

}  // namespace osa
