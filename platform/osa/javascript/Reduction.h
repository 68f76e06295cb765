// What is left of a script that is stored run-only: what running it needs.
#pragma once

namespace osa::script {

/// An expression, in the room's realm, that gives a function (text) => text. Gone are comments and
/// layout; line breaks stay where they were. Parameters and local variables get other names where
/// nothing can tell. It is of the same syntax tree, or the function throws. Doing it again changes
/// nothing.
extern const char16_t kReduction[];

}  // namespace osa::script
