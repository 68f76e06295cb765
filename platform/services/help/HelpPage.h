// What a help page in HTML says: its title, its words and its anchors.
#pragma once

#include <string>
#include <vector>

#include "platform/base/ByteReader.h"

namespace osa {

/// All in UTF-8.
struct HelpPage {
    std::string title;      ///< blanks made single; at most 512 bytes
    std::string bookTitle;  ///< only a book's title page has one: <meta name="AppleTitle">
    std::string text;       ///< title, keywords and description included, without any markup
    std::vector<std::string> anchors;
};

/// Any bytes are a page: unknown markup is passed over, what is not closed ends with the page. The
/// text is UTF-8 unless a byte-order mark or a <meta> names another encoding.
HelpPage readHelpPage(ByteSpan bytes);

}  // namespace osa
