// A place in decoded text, for the parsers of the text forms: never moves past the end.
#pragma once

#include <string_view>

namespace osa::plist {

class TextCursor {
  public:
    explicit TextCursor(std::u16string_view text) : rest_(text) {}

    bool atEnd() const { return rest_.empty(); }
    /// The unit at `offset` from here; 0 behind the end.
    char16_t peek(std::size_t offset = 0) const {
        return offset < rest_.size() ? rest_[offset] : u'\0';
    }
    char16_t take() {
        const char16_t unit = peek();
        skip(1);
        return unit;
    }
    void skip(std::size_t count) {
        rest_.remove_prefix(count < rest_.size() ? count : rest_.size());
    }
    bool startsWith(std::u16string_view text) const { return rest_.starts_with(text); }
    /// Moves behind `text` when it stands here.
    bool accept(std::u16string_view text) {
        if (!startsWith(text)) return false;
        rest_.remove_prefix(text.size());
        return true;
    }
    /// The text up to `end`, and moves behind it; false, at the end of all text, when it is not
    /// there.
    bool takeUntil(std::u16string_view end, std::u16string_view& taken) {
        const std::size_t position = rest_.find(end);
        taken = rest_.substr(0, position);
        skip(position == rest_.npos ? rest_.size() : position + end.size());
        return position != rest_.npos;
    }
    bool skipUntil(std::u16string_view end) {
        std::u16string_view ignored;
        return takeUntil(end, ignored);
    }
    /// The run of units that `belongs` accepts.
    template <typename Predicate>
    std::u16string_view takeWhile(Predicate belongs) {
        std::size_t length = 0;
        while (length < rest_.size() && belongs(rest_[length])) ++length;
        const std::u16string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return taken;
    }

  private:
    std::u16string_view rest_;
};

inline bool isBlank(char16_t unit) {
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

/// The value of a hexadecimal digit, or -1.
inline int hexValue(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
    return -1;
}

}  // namespace osa::plist
