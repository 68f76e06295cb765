// The order that people sort text in: the root order of the Unicode Collation Algorithm.
#pragma once

#include <optional>
#include <string_view>

namespace osa {

/// What the comparison passes over. Composed and decomposed forms are always equal.
struct CollationRules {
    bool ignoresCase = false;
    bool ignoresWidth = false;
    bool ignoresPunctuation = false;
    /// Runs of digits are compared as numbers.
    bool countsDigits = false;

    bool operator==(const CollationRules&) const = default;
};

/// Negative, 0 or positive; none when there is no memory for a collator. Numbers count up to 254
/// digits, and text of combining marks alone takes the square of its length in time. Each thread
/// makes one collator for each set of rules, and keeps it.
std::optional<int> compareText(std::u16string_view first, std::u16string_view second,
                               const CollationRules& rules);

/// Whether two texts are the same but for case and for the form, composed or decomposed, of their
/// accents.
bool isSameCaselessText(std::u16string_view first, std::u16string_view second);

}  // namespace osa
