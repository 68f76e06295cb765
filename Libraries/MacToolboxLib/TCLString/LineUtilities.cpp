// Splitting and joining.
#include "Libraries/MacToolboxLib/TCLString/LineUtilities.h"

#include <iterator>

namespace {

constexpr UniChar kLineFeed = 0x000A;
constexpr UniChar kCarriageReturn = 0x000D;
constexpr UniChar kParagraphSeparator = 0x2029;

}  // namespace

void SplitLines(const TCLString& text, std::vector<TCLString>& lines) {
    static const TCLString sBreaks = {kLineFeed, kCarriageReturn, kParagraphSeparator};
    SplitString(text, sBreaks, lines);
}

void SplitString(const TCLString& text, const TCLString& delimiters,
                 std::vector<TCLString>& parts) {
    std::vector<TCLString> pieces;  // `text` may be one of `parts`
    std::size_t start = 0;
    for (;;) {
        const std::size_t found = text.find_first_of(delimiters, start);
        if (found == TCLString::npos) break;
        pieces.push_back(text.substr(start, found - start));
        start = found + 1;
        const bool isPair =
            text[found] == kCarriageReturn && start < text.size() && text[start] == kLineFeed;
        if (isPair) ++start;
    }
    pieces.push_back(text.substr(start));
    parts.insert(parts.end(), std::make_move_iterator(pieces.begin()),
                 std::make_move_iterator(pieces.end()));
}

TCLString JoinLines(const std::vector<TCLString>& lines, UniChar separator) {
    TCLString result;
    for (const TCLString& line : lines) {
        if (&line != &lines.front()) result += separator;
        result += line;
    }
    return result;
}
