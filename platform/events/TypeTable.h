// How the data of the types that the manager knows are made up.
#pragma once

#include <CoreServices/AEDataModel.h>

#include <array>

namespace osa {

/// Fields at the start, then units of one width up to the end.
struct PlainType {
    DescType type;
    UInt8 unit;                   ///< 1: bytes
    std::array<UInt8, 2> fields;  ///< widths; 0: no such field
};

/// Null for a type that is not in the table: its data may be anything, also those of a record.
const PlainType* plainTypeOf(DescType type);

}  // namespace osa
