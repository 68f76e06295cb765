// A help book: the pages below one folder.
#pragma once

#include <string>
#include <vector>

#include "platform/base/Result.h"

namespace osa {

/// A page is a file with the extension html, htm or xhtml. Links are followed only to pages inside
/// the folder. Of a book beyond any reader's patience (10,000 pages, folders eight deep, 64 MiB)
/// the rest is left out, and so are pages of more than 4 MiB.
struct HelpBook {
    std::string name;    ///< UTF-8
    std::string folder;  ///< absolute, without links
};

struct HelpHit {
    std::string title;  ///< UTF-8, never empty
    std::string path;
    std::size_t count = 0;  ///< how often the words occur
};

// Paths of pages are absolute and without links; kAHInternalErr when there is no such page.

/// The page that the book's <meta name="AppleTitle"> is in, else "index" at the top, else the first
/// by name.
Result<std::string> titlePage(const HelpBook& book);
/// `path`: relative to the book's folder.
Result<std::string> pageAt(const HelpBook& book, const std::string& path);
/// The first by name that has the anchor.
Result<std::string> pageWithAnchor(const HelpBook& book, const std::string& anchor);

/// The words of a query as search takes them: parted at blanks, case folded.
std::vector<std::u16string> wordsOf(std::u16string_view query);
/// Appends the pages that hold all of the words.
void search(const HelpBook& book, const std::vector<std::u16string>& words,
            std::vector<HelpHit>& hits);

}  // namespace osa
