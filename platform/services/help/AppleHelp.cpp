// The published calls: registered books, and showing their pages with the desktop's opener.
#include <CoreServices/AppleHelp.h>

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/MacErrors.h>

#include <array>
#include <map>
#include <mutex>
#include <new>

#include "platform/bundles/Bundle.h"
#include "platform/cf/StringObject.h"
#include "platform/posix/FileSystem.h"
#include "platform/services/DesktopOpener.h"
#include "platform/services/help/HelpBook.h"
#include "platform/services/help/HelpResults.h"
#include "platform/services/help/Markup.h"

namespace osa {
namespace {

/// The books that the process has registered.
class HelpShelf {
  public:
    void add(HelpBook book) {
        const std::lock_guard guard(lock_);
        books_.insert_or_assign(book.name, std::move(book.folder));
    }
    /// The book of the name, or all, by name, when it is null.
    std::vector<HelpBook> books(CFStringRef name) {
        const std::lock_guard guard(lock_);
        std::vector<HelpBook> found;
        if (name == nullptr) {
            for (const auto& [each, folder] : books_) found.push_back({each, folder});
        } else if (const auto book = books_.find(utf8Of(name)); book != books_.end()) {
            found.push_back({book->first, book->second});
        }
        return found;
    }

  private:
    std::mutex lock_;
    std::map<std::string, std::string> books_;
};

HelpShelf& shelf() {
    static HelpShelf shared;
    return shared;
}

/// Whether a path could lead out of the folder that it is relative to.
bool climbs(const std::string& path) {
    return ("/" + path + "/").find("/../") != std::string::npos;
}

CFStringRef stringValue(CFBundleRef bundle, CFStringRef key) {
    return cfCast<__CFString>(CFBundleGetValueForInfoDictionaryKey(bundle, key));
}

Result<HelpBook> bookOf(const FSRef& application) {
    const auto place =
        CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &application));
    if (!place) return Failure(kAHInternalErr);
    const auto bundle = CFRef<CFBundleRef>::Adopt(CFBundleCreate(kCFAllocatorDefault, place.get()));
    if (!bundle) return Failure(kAHInternalErr);
    const CFStringRef folder = stringValue(bundle.get(), CFSTR("CFBundleHelpBookFolder"));
    HelpBook book{utf8Of(stringValue(bundle.get(), CFSTR("CFBundleHelpBookName"))), {}};
    if (book.name.empty() || utf8Of(folder).empty() || climbs(utf8Of(folder)))
        return Failure(kAHInternalErr);
    const auto url =
        CFRef<CFURLRef>::Adopt(CFBundleCopyResourceURL(bundle.get(), folder, nullptr, nullptr));
    std::array<UInt8, 4096> path{};
    if (!url || !CFURLGetFileSystemRepresentation(url.get(), true, path.data(), path.size()))
        return Failure(kAHInternalErr);
    const auto real = posix::realPath(reinterpret_cast<const char*>(path.data()));
    const auto inside = posix::realPath(bundle.get()->layout.root);
    if (!real.ok() || !inside.ok() || !real->starts_with(*inside + "/"))
        return Failure(kAHInternalErr);
    const auto status = posix::status(*real, posix::Follow::no);
    if (!status.ok() || !status->isFolder()) return Failure(kAHInternalErr);
    book.folder = *real;
    return book;
}

/// `url` without the anchor that it may have, and with this one.
Result<std::string> withAnchor(const std::string& url, CFStringRef anchor) {
    if (anchor == nullptr || CFStringGetLength(anchor) == 0) return url;
    const auto text = CFRef<CFStringRef>::Adopt(CFURLCreateStringByAddingPercentEscapes(
        kCFAllocatorDefault, anchor, nullptr, nullptr, kCFStringEncodingUTF8));
    if (!text) return Failure(kAHInternalErr);
    return url.substr(0, url.find('#')) + "#" + utf8Of(text.get());
}

Result<void> show(const std::string& url) {
    const auto opened = openWithDesktop(url);
    if (opened.ok() || opened.status() == memFullErr) return opened;
    return Failure(kAHConfigErr);
}

Result<void> showPage(const std::string& path, CFStringRef anchor) {
    OSA_TRY(const std::string file, fileURLOf(path));
    OSA_TRY(const std::string url, withAnchor(file, anchor));
    return show(url);
}

Result<void> showURL(CFStringRef text, CFStringRef anchor) {
    const auto url =
        CFRef<CFURLRef>::Adopt(CFURLCreateWithString(kCFAllocatorDefault, text, nullptr));
    if (!url) return Failure(kAHInternalErr);
    const std::string scheme =
        lowerCase(utf8Of(CFRef<CFStringRef>::Adopt(CFURLCopyScheme(url.get())).get()));
    FSRef file;
    const bool isThere = scheme == "http" || scheme == "https" ||
                         (scheme == "file" && CFURLGetFSRef(url.get(), &file));
    if (!isThere) return Failure(kAHInternalErr);
    OSA_TRY(const std::string full, withAnchor(utf8Of(text), anchor));
    return show(full);
}

Result<void> gotoPage(CFStringRef bookname, CFStringRef path, CFStringRef anchor) {
    const bool hasPath = path != nullptr && CFStringGetLength(path) > 0;
    if (bookname == nullptr) return hasPath ? showURL(path, anchor) : Failure(paramErr);
    const auto books = shelf().books(bookname);
    if (books.empty()) return Failure(kAHInternalErr);
    OSA_TRY(const std::string page,
            hasPath ? pageAt(books.front(), utf8Of(path)) : titlePage(books.front()));
    return showPage(page, anchor);
}

Result<void> searchBooks(CFStringRef bookname, CFStringRef query) {
    const auto words = wordsOf(unitsOf(query));
    std::vector<HelpHit> hits;
    if (!words.empty())
        for (const HelpBook& book : shelf().books(bookname)) search(book, words, hits);
    if (hits.empty()) return Failure(kAHInternalErr);
    OSA_TRY(const std::string list, writeHelpResults(utf8Of(query), std::move(hits)));
    return showPage(list, nullptr);
}

Result<void> lookUpAnchor(CFStringRef bookname, CFStringRef anchor) {
    const std::string name = utf8Of(anchor);
    for (const HelpBook& book : shelf().books(bookname)) {
        const auto page = pageWithAnchor(book, name);
        if (page.ok()) return showPage(*page, anchor);
    }
    return Failure(kAHInternalErr);
}

template <typename Work>
OSStatus statusOf(Work work) {
    try {
        return work().status();
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

}  // namespace
}  // namespace osa

OSStatus AHRegisterHelpBook(const FSRef* appBundleRef) {
    if (appBundleRef == nullptr) return paramErr;
    return osa::statusOf([&] {
        auto book = osa::bookOf(*appBundleRef);
        if (book.ok()) osa::shelf().add(*book);
        return book;
    });
}

OSStatus AHGotoPage(CFStringRef bookname, CFStringRef path, CFStringRef anchor) {
    return osa::statusOf([&] { return osa::gotoPage(bookname, path, anchor); });
}

OSStatus AHSearch(CFStringRef bookname, CFStringRef query) {
    if (query == nullptr) return paramErr;
    return osa::statusOf([&] { return osa::searchBooks(bookname, query); });
}

OSStatus AHLookupAnchor(CFStringRef bookname, CFStringRef anchor) {
    if (anchor == nullptr) return paramErr;
    return osa::statusOf([&] { return osa::lookUpAnchor(bookname, anchor); });
}
