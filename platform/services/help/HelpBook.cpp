// Walks a book's folder and asks its pages.
#include "platform/services/help/HelpBook.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <array>
#include <optional>

#include "platform/posix/FileSystem.h"
#include "platform/services/help/HelpPage.h"
#include "platform/services/help/Markup.h"
#include "platform/text/TextConverter.h"
#include "platform/text/UnicodeForms.h"

namespace osa {
namespace {

constexpr std::size_t kMostPages = 10'000;
constexpr std::size_t kMostEntries = 100'000;
constexpr int kDeepest = 8;
constexpr std::uint64_t kLargestPage = 4ull * 1024 * 1024;
constexpr std::uint64_t kMostBytes = 64ull * 1024 * 1024;
/// Where a page says what book it is the title page of.
constexpr std::uint64_t kHead = 16ull * 1024;
constexpr char32_t kSoftHyphen = 0x00AD;

bool isPageName(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return false;
    const std::string extension = lowerCase(name.substr(dot + 1));
    return extension == "html" || extension == "htm" || extension == "xhtml";
}

/// Gathers the pages of a book. A link leads to a page that is found without it, or out of the
/// book, so none is followed.
class BookWalk {
  public:
    std::vector<std::string> pagesBelow(const std::string& folder) {
        walk(folder, kDeepest);
        std::ranges::sort(pages_);
        return std::move(pages_);
    }

  private:
    void walk(const std::string& folder, int depth) {
        auto reader = posix::DirectoryReader::open(folder, posix::Follow::no);
        while (reader.ok() && pages_.size() < kMostPages && entries_ < kMostEntries) {
            const auto name = reader->next();
            if (!name.ok() || name->empty()) return;
            ++entries_;
            const std::string path = folder + "/" + *name;
            const auto status = posix::status(path, posix::Follow::no);
            if (!status.ok()) continue;
            if (status->isFolder() && depth > 1) walk(path, depth - 1);
            if (status->isRegular() && isPageName(*name)) pages_.push_back(path);
        }
    }

    std::vector<std::string> pages_;
    std::size_t entries_ = 0;
};

std::vector<std::string> pagesOf(const HelpBook& book) {
    return BookWalk().pagesBelow(book.folder);
}

/// So that no character is cut in two, of two bytes or of more.
void endAtTag(std::vector<std::byte>& bytes) {
    const std::size_t length = bytes.size();
    while (!bytes.empty() && bytes.back() != std::byte{'>'}) bytes.pop_back();
    if (bytes.size() % 2 != 0 && bytes.size() < length) bytes.push_back(std::byte{0});
}

/// Reads pages of one question, until they are too much.
class PageReading {
  public:
    std::optional<HelpPage> whole(const std::string& path) { return read(path, kLargestPage); }
    std::optional<HelpPage> head(const std::string& path) { return read(path, kHead); }

  private:
    std::optional<HelpPage> read(const std::string& path, std::uint64_t most) {
        const auto file = posix::openFile(path, posix::Follow::no);
        if (!file.ok() || (*file)->size() > kLargestPage) return std::nullopt;
        const std::uint64_t size = std::min((*file)->size(), most);
        if (size > left_) return std::nullopt;
        left_ -= size;
        std::vector<std::byte> bytes(size);
        if (!(*file)->readExactly(0, bytes).ok()) return std::nullopt;
        if (size < (*file)->size()) endAtTag(bytes);
        return readHelpPage(bytes);
    }

    std::uint64_t left_ = kMostBytes;
};

std::string leafOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// How sure it is that the page is the book's title page: less is surer.
enum class TitleRank { ofThisBook, ofSomeBook, index, any };

TitleRank titleRank(const HelpBook& book, const std::string& path, PageReading& reading) {
    if (const auto page = reading.head(path); page && !page->bookTitle.empty())
        return page->bookTitle == book.name ? TitleRank::ofThisBook : TitleRank::ofSomeBook;
    const bool isAtTop = path.rfind('/') == book.folder.size();
    const std::string leaf = lowerCase(leafOf(path));
    return isAtTop && leaf.starts_with("index.") ? TitleRank::index : TitleRank::any;
}

std::u16string folded(std::u16string_view units) {
    std::u16string result;
    result.reserve(units.size());
    for (std::size_t at = 0; at < units.size();) {
        const Character character = characterAt(units, at);
        at += character.length;
        if (character.value != kSoftHyphen) appendCharacter(foldCase(character.value), result);
    }
    return result;
}

std::size_t occurrences(std::u16string_view text, std::u16string_view word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + word.size()))
        ++count;
    return count;
}

/// 0 when one of the words is missing.
std::size_t countAll(const HelpPage& page, const std::vector<std::u16string>& words) {
    std::u16string units;
    (void)utf16FromUTF8(page.text, units);
    const std::u16string text = folded(units);
    std::size_t total = 0;
    for (const std::u16string& word : words) {
        const std::size_t count = occurrences(text, word);
        if (count == 0) return 0;
        total += count;
    }
    return total;
}

}  // namespace

Result<std::string> titlePage(const HelpBook& book) {
    std::optional<std::string> best;
    TitleRank bestRank = TitleRank::any;
    PageReading reading;
    for (const std::string& path : pagesOf(book)) {
        const TitleRank rank = titleRank(book, path, reading);
        if (best && rank >= bestRank) continue;
        best = path;
        bestRank = rank;
        if (rank == TitleRank::ofThisBook) break;
    }
    if (!best) return Failure(kAHInternalErr);
    return *best;
}

Result<std::string> pageAt(const HelpBook& book, const std::string& path) {
    const auto real = posix::realPath(book.folder + "/" + path);
    if (!real.ok() || !real->starts_with(book.folder + "/") || !isPageName(leafOf(*real)))
        return Failure(kAHInternalErr);
    const auto status = posix::status(*real, posix::Follow::no);
    if (!status.ok() || !status->isRegular()) return Failure(kAHInternalErr);
    return *real;
}

Result<std::string> pageWithAnchor(const HelpBook& book, const std::string& anchor) {
    PageReading reading;
    for (const std::string& path : pagesOf(book)) {
        const auto page = reading.whole(path);
        if (page && std::ranges::count(page->anchors, anchor) > 0) return path;
    }
    return Failure(kAHInternalErr);
}

std::vector<std::u16string> wordsOf(std::u16string_view query) {
    const auto isBlank = [](char16_t unit) {
        return unit <= ' ' || unit == 0x00A0 || unit == 0x3000;
    };
    std::vector<std::u16string> words(1);
    for (const char16_t unit : folded(query)) {
        if (!isBlank(unit)) {
            words.back() += unit;
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    if (words.back().empty()) words.pop_back();
    return words;
}

void search(const HelpBook& book, const std::vector<std::u16string>& words,
            std::vector<HelpHit>& hits) {
    PageReading reading;
    for (std::string& path : pagesOf(book)) {
        auto page = reading.whole(path);
        const std::size_t count = page ? countAll(*page, words) : 0;
        if (count == 0) continue;
        std::string title = page->title.empty() ? leafOf(path) : std::move(page->title);
        hits.push_back({std::move(title), std::move(path), count});
    }
}

}  // namespace osa
