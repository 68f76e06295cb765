// What the room does in JavaScript itself, in a realm of its own that is frozen.
#pragma once

namespace osa::script {

/// An expression that gives an object of functions:
///   display(value, human, limit)   text of a value; null when it would have more characters
///   lexicals(source)        names that `let`, `const` and `class` declare at the top level; null
///                           when they cannot be told
///   unboxed(object)         the value that an object of Number, String and the like stands for
///   toLocal(date)           milliseconds since 1970, on the clock of the place
extern const char16_t kPrelude[];
/// Run in each script's realm before the script is: `on` and `console`.
extern const char16_t kFurniture[];

}  // namespace osa::script
