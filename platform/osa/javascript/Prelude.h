// What the room does in JavaScript itself, in a realm of its own that is frozen.
#pragma once

namespace osa::script {

/// A function of `classOf`, which tells an object's class truly. It gives an object of functions:
///   display(value, human, limit)   text of a value; null when it would have more characters
///   line(values, limit)     text of an array of them for people, with blanks between; null, too
///   unboxed(object)         the value that an object of Number, String and the like stands for
///   toLocal(date)           milliseconds since 1970, on the clock of the place
extern const char16_t kPrelude[];
/// A function that is called in each script's realm before the script is run, with what a line is
/// given to: it makes `on` and `console`.
extern const char16_t kFurniture[];

}  // namespace osa::script
