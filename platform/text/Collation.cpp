// Collation by ICU.
#include "platform/text/Collation.h"

#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace osa {
namespace {

struct CloseCollator {
    void operator()(UCollator* collator) const { ucol_close(collator); }
};
using Collator = std::unique_ptr<UCollator, CloseCollator>;

/// Case and width are told apart, or not, together, at the third strength of the algorithm; and so
/// are kana and ligatures.
UCollationStrength strengthOf(const CollationRules& rules) {
    return rules.ignoresCase && rules.ignoresWidth ? UCOL_SECONDARY : UCOL_TERTIARY;
}

Collator makeCollator(const CollationRules& rules) {
    UErrorCode status = U_ZERO_ERROR;
    Collator collator(ucol_open("", &status));
    const auto set = [&](UColAttribute attribute, bool isOn, UColAttributeValue value = UCOL_ON) {
        if (isOn) ucol_setAttribute(collator.get(), attribute, value, &status);
    };
    if (U_FAILURE(status)) return nullptr;
    ucol_setStrength(collator.get(), strengthOf(rules));
    set(UCOL_NORMALIZATION_MODE, true);
    set(UCOL_NUMERIC_COLLATION, rules.countsDigits);
    set(UCOL_ALTERNATE_HANDLING, true,
        rules.ignoresPunctuation ? UCOL_SHIFTED : UCOL_NON_IGNORABLE);
    return U_FAILURE(status) ? nullptr : std::move(collator);
}

const UCollator* collatorFor(const CollationRules& rules) {
    struct Kept {
        CollationRules rules;
        Collator collator;
    };
    thread_local std::vector<Kept> kept;
    for (const Kept& one : kept) {
        if (one.rules == rules) return one.collator.get();
    }
    Collator made = makeCollator(rules);
    if (!made) return nullptr;
    kept.push_back({rules, std::move(made)});
    return kept.back().collator.get();
}

/// The unit in ordinary width; none when it is in that.
std::u16string_view ordinaryWidth(char16_t unit, std::span<UChar, 8> room) {
    const bool isWidthForm = (unit >= 0xFF01 && unit <= 0xFFEE) || unit == 0x3000;
    if (!isWidthForm) return {};
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* const forms = unorm2_getNFKCInstance(&status);
    const int32_t length = unorm2_getRawDecomposition(forms, unit, room.data(),
                                                      static_cast<int32_t>(room.size()), &status);
    if (U_FAILURE(status) || length <= 0) return {};
    return {room.data(), static_cast<std::size_t>(length)};
}

std::u16string withOrdinaryWidth(std::u16string_view text) {
    std::u16string out;
    out.reserve(text.size());
    std::array<UChar, 8> room;
    for (const char16_t unit : text) {
        const auto ordinary = ordinaryWidth(unit, room);
        ordinary.empty() ? out.push_back(unit) : (void)out.append(ordinary);
    }
    return out;
}

std::u16string withoutCase(const std::u16string& text) {
    UErrorCode status = U_ZERO_ERROR;
    std::u16string out(text.size() * 3, u'\0');  // the most that folding makes of a unit is three
    const int32_t length =
        u_strFoldCase(out.data(), static_cast<int32_t>(out.size()), text.data(),
                      static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT, &status);
    if (U_FAILURE(status)) return text;
    out.resize(static_cast<std::size_t>(length));
    return out;
}

/// The text without what the collator would tell apart only together with something else.
std::u16string folded(std::u16string_view text, const CollationRules& rules) {
    std::u16string out = rules.ignoresWidth ? withOrdinaryWidth(text) : std::u16string(text);
    return rules.ignoresCase ? withoutCase(out) : out;
}

int compare(const UCollator* collator, std::u16string_view first, std::u16string_view second) {
    return ucol_strcoll(collator, first.data(), static_cast<int32_t>(first.size()), second.data(),
                        static_cast<int32_t>(second.size()));
}

}  // namespace

std::optional<int> compareText(std::u16string_view first, std::u16string_view second,
                               const CollationRules& rules) {
    const UCollator* const collator = collatorFor(rules);
    if (collator == nullptr) return std::nullopt;
    const bool needsFolding =
        strengthOf(rules) == UCOL_TERTIARY && (rules.ignoresCase || rules.ignoresWidth);
    if (!needsFolding) return compare(collator, first, second);
    return compare(collator, folded(first, rules), folded(second, rules));
}

bool isSameCaselessText(std::u16string_view first, std::u16string_view second) {
    UErrorCode status = U_ZERO_ERROR;
    const int32_t order = unorm_compare(first.data(), static_cast<int32_t>(first.size()),
                                        second.data(), static_cast<int32_t>(second.size()),
                                        U_COMPARE_IGNORE_CASE | U_FOLD_CASE_DEFAULT, &status);
    return U_SUCCESS(status) ? order == 0 : first == second;
}

}  // namespace osa
