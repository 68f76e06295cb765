// The coercions that the manager knows by itself.
#pragma once

#include <CoreServices/AEDataModel.h>

namespace osa {

/// A coercion of one row of the table: makes `result`, which is the null descriptor when called and
/// stays so unless the answer is noErr. May throw std::bad_alloc.
using Coercion = OSErr (*)(const AEDesc* from, DescType toType, AEDesc* result);

/// The coercion of the first row that has the pair; null when there is none.
Coercion findCoercion(DescType from, DescType to);

/// Whether a row names the type.
bool isNamedInTable(DescType type);

}  // namespace osa
