// Cutting text into lines or pieces, and joining them.
#pragma once

#include <vector>

#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

/// Appends the lines of `text` to `lines`, without their breaks: LF, CR, CR LF, and the paragraph
/// separator U+2029. Text that ends in a break has an empty last line; empty text is one empty
/// line.
void SplitLines(const TCLString& text, std::vector<TCLString>& lines);
/// The same with the units of `delimiters` for breaks. A carriage return among them takes a line
/// feed after it along.
void SplitString(const TCLString& text, const TCLString& delimiters, std::vector<TCLString>& parts);
/// The lines with `separator` between each two.
TCLString JoinLines(const std::vector<TCLString>& lines, UniChar separator);
