// Decimal numbers as people write them: blanks, a sign, digits with a point, an exponent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace osa {

class DecimalText {
  public:
    /// Takes in a text: [blanks] [+ or -] digits [. digits] [e [+ or -] digits] [blanks], with a
    /// digit on one side of the point at least. False for anything else.
    bool parse(std::u16string_view text);

    bool isNegative() const { return negative_; }
    /// Without sign and blanks, as std::from_chars reads it.
    std::string_view literal() const { return literal_; }
    /// Whether the magnitude is under 1.
    bool isBelowOne() const;
    /// The magnitude's nearest integer, the greater one in the middle, from the digits themselves.
    /// False when it does not fit.
    bool roundedMagnitude(std::uint64_t& magnitude) const;

  private:
    bool parseExponent(std::string_view text);

    bool negative_ = false;
    std::string literal_;
    std::string digits_;      ///< significant ones: without the point, without zeros in front
    std::int64_t point_ = 0;  ///< how many of them stand before the point; may lie outside
};

}  // namespace osa
