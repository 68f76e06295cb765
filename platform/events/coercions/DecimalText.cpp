// Reading decimal numbers exactly.
#include "platform/events/coercions/DecimalText.h"

#include <algorithm>

namespace osa {
namespace {

/// An exponent beyond this is as good as infinite: no text has as many digits to make up for it.
constexpr std::int64_t kLargestExponent = std::int64_t{1} << 40;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// The text in bytes without blanks around it; empty when it is not all ASCII.
std::string trimmedASCII(std::u16string_view text) {
    constexpr std::u16string_view kBlanks = u" \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::u16string_view::npos) return {};
    text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
    const bool isASCII =
        std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
    return isASCII ? std::string(text.begin(), text.end()) : std::string();
}

/// Whether there was a sign, which is taken off, and it was "-".
bool takeSign(std::string_view& text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    return negative;
}

}  // namespace

bool DecimalText::parse(std::u16string_view text) {
    const std::string bytes = trimmedASCII(text);
    std::string_view rest = bytes;
    negative_ = takeSign(rest);
    literal_ = rest;
    digits_.clear();
    point_ = 0;
    bool seenDigit = false;
    bool seenPoint = false;
    for (; !rest.empty() && (isDigit(rest.front()) || (rest.front() == '.' && !seenPoint));
         rest.remove_prefix(1)) {
        if (rest.front() == '.') {
            seenPoint = true;
            continue;
        }
        seenDigit = true;
        const bool isSignificant = !digits_.empty() || rest.front() != '0';
        if (isSignificant) digits_.push_back(rest.front());
        if (!seenPoint) {
            point_ += isSignificant ? 1 : 0;
        } else if (!isSignificant) {
            --point_;
        }
    }
    return seenDigit && (rest.empty() || parseExponent(rest));
}

bool DecimalText::parseExponent(std::string_view text) {
    if (text.front() != 'e' && text.front() != 'E') return false;
    text.remove_prefix(1);
    const bool negative = takeSign(text);
    if (text.empty() || !std::all_of(text.begin(), text.end(), isDigit)) return false;
    std::int64_t exponent = 0;
    for (const char digit : text) {
        exponent = std::min(exponent * 10 + (digit - '0'), kLargestExponent);
    }
    point_ += negative ? -exponent : exponent;
    return true;
}

bool DecimalText::isBelowOne() const {
    return digits_.empty() || point_ <= 0;
}

bool DecimalText::roundedMagnitude(std::uint64_t& magnitude) const {
    constexpr std::int64_t kMostDigits = 20;
    magnitude = 0;
    if (digits_.empty() || point_ < 0) return true;
    if (point_ > kMostDigits) return false;
    const auto digitAt = [this](std::size_t i) -> std::uint64_t {
        return i < digits_.size() ? static_cast<std::uint64_t>(digits_[i] - '0') : 0;
    };
    const auto whole = static_cast<std::size_t>(point_);
    for (std::size_t i = 0; i < whole; ++i) {
        if (__builtin_mul_overflow(magnitude, std::uint64_t{10}, &magnitude) ||
            __builtin_add_overflow(magnitude, digitAt(i), &magnitude)) {
            return false;
        }
    }
    const std::uint64_t roundUp = digitAt(whole) >= 5 ? 1 : 0;
    return !__builtin_add_overflow(magnitude, roundUp, &magnitude);
}

}  // namespace osa
