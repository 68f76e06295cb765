// Help books on disk, and what the desktop's opener is given for them; what is told without a
// desktop.
#include <CoreFoundation/CFBundle.h>
#include <CoreServices/AppleHelp.h>
#include <CoreServices/Events.h>
#include <CoreServices/Processes.h>
#include <OSA/HostEvents.h>
#include <OSA/HostFolders.h>

#include <regex>

#include "platform/cf/StringObject.h"
#include "platform/services/help/HelpPage.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

using String = CFRef<CFStringRef>;

String text(const char* utf8) {
    return String::Adopt(utf8 == nullptr ? nullptr : createString(std::string_view(utf8)));
}

class Help : public testing::Test {
  protected:
    Help() {
        OSASetHostFolderRoot(folder.path().c_str());
        folder.write("bin/xdg-open",
                     "#!/bin/sh\nprintf %s \"$1\" >\"$OPENED.new\"\n"
                     "mv \"$OPENED.new\" \"$OPENED\"\n");
        fs::permissions(folder.path("bin/xdg-open"), fs::perms::owner_all);
        setenv("OPENED", folder.path("opened").c_str(), 1);
        setenv("PATH", (folder.path("bin") + ":/usr/bin:/bin").c_str(), 1);
    }
    ~Help() override { OSASetHostFolderRoot(nullptr); }

    void writePage(const std::string& name, const std::string& content) {
        folder.write("My App.app/Contents/Resources/de.lproj/Help 1/" + name, content);
    }
    OSStatus registerBook(const std::string& name, const std::string& inside) {
        folder.write("My App.app/Contents/Info.plist",
                     "<plist><dict><key>CFBundleHelpBookName</key><string>" + name +
                         "</string><key>CFBundleHelpBookFolder</key><string>" + inside +
                         "</string><key>CFBundleDevelopmentRegion</key><string>de</string>"
                         "</dict></plist>");
        const FSRef app = refOf(folder.path("My App.app"));
        return AHRegisterHelpBook(&app);
    }
    /// What the opener was given; of a page of the book the part behind its folder.
    std::string opened() const {
        const std::string path = folder.path("opened");
        comesTrue([&] { return fs::exists(path); });
        std::string url = contentOf(path);
        fs::remove(path);
        const std::string book = "/Resources/de.lproj/Help%201/";
        const std::size_t at = url.find(book);
        return at == url.npos ? url : url.substr(at + book.size());
    }

    TemporaryFolder folder;
};

TEST_F(Help, PagesAnchorsAndSearch) {
    writePage("a.html", "<title>First &lt;one&gt;</title><a name='An#ker 1'>x</a> resize");
    writePage("deep/b & c.HTM", "<body id=mark>Re<b>size</b> image. <i>RESIZE</i> image caf\u00E9");
    writePage("empty.xhtml", "<!-- resize image -->");
    writePage("notes.txt", "resize image");
    const std::string outside = folder.write("outside.html", "<p id=out>resize image");
    for (const char* none : {"../../..", "None", ""})
        EXPECT_EQ(registerBook("Book", none), kAHInternalErr) << none;
    ASSERT_EQ(registerBook("Book", "Help 1"), noErr);
    const std::string book = folder.path("My App.app/Contents/Resources/de.lproj/Help 1");
    fs::create_symlink(outside, book + "/link.html");
    fs::create_directory_symlink("..", book + "/loop");

    const auto check = [this](const char* book, const char* page, const char* part, OSStatus status,
                              const std::string& shown) {
        EXPECT_EQ(AHGotoPage(text(book).get(), text(page).get(), text(part).get()), status)
            << shown;
        EXPECT_TRUE(status != noErr || opened() == shown) << shown;
    };
    const std::string own = "file://" + outside;
    using Case = std::tuple<const char*, const char*, const char*, OSStatus, std::string>;
    for (const Case& each : std::vector<Case>{
             {"Book", nullptr, nullptr, noErr, "a.html"},
             {"Book", "deep/b & c.HTM", "x#y \u00E9", noErr, "deep/b%20&%20c.HTM#x%23y%20%C3%A9"},
             {"Book", "../../../../../outside.html", nullptr, kAHInternalErr, "leaves"},
             {"Book", "link.html", nullptr, kAHInternalErr, "leaves by a link"},
             {"Book", "notes.txt", nullptr, kAHInternalErr, "no page"},
             {"Book", "none.html", nullptr, kAHInternalErr, "missing"},
             {"Other", nullptr, nullptr, kAHInternalErr, "not registered"},
             {nullptr, nullptr, nullptr, paramErr, "nothing"},
             {nullptr, "javascript:alert(1)", nullptr, kAHInternalErr, "scheme"},
             {nullptr, "file:///none.html", nullptr, kAHInternalErr, "no file"},
             {nullptr, "HTTPS://example.org/x#old", "new", noErr, "HTTPS://example.org/x#new"},
             {nullptr, own.c_str(), nullptr, noErr, own}})
        std::apply(check, each);
    // Each is a better title page than those before.
    for (const auto& [page, content] : std::vector<std::pair<const char*, const char*>>{
             {"index.html", ""},
             {"deep/x.html", "<META content='Other' NAME=\"appletitle\">"},
             {"y.html", "<meta name=AppleTitle content=Book>"}}) {
        writePage("deep/index.html", "");
        writePage(page, content);
        check("Book", "", nullptr, noErr, page);
    }

    const auto name = text("Book");
    for (const auto& [anchor, page] : std::map<const char*, std::string>{
             {"An#ker 1", "a.html#An%23ker%201"}, {"mark", "deep/b%20&%20c.HTM#mark"}}) {
        EXPECT_EQ(AHLookupAnchor(nullptr, text(anchor).get()), noErr);
        EXPECT_EQ(opened(), page);
    }
    EXPECT_EQ(AHLookupAnchor(name.get(), text("out").get()), kAHInternalErr);
    using Titles = std::vector<std::string>;
    for (const auto& [words, expected] :
         std::map<const char*, Titles>{{"RE\u00ADsize", {"b &amp; c.HTM", "First &lt;one&gt;"}},
                                       {" image  CAF\u00C9 ", {"b &amp; c.HTM"}},
                                       {"first", {"First &lt;one&gt;"}}}) {
        ASSERT_EQ(AHSearch(nullptr, text(words).get()), noErr) << words;
        const std::string url = opened();
        EXPECT_TRUE(url.ends_with("/help_test/Help%20Results.html")) << url;
        const auto path = String::Adopt(CFURLCreateStringByReplacingPercentEscapes(
            kCFAllocatorDefault, text(url.c_str()).get(), CFSTR("")));
        const std::string list = contentOf(utf8Of(path.get()).substr(7));
        const std::regex link("<a href=\"file:///[^\"]*\">([^<]*)</a>");
        const Titles titles(std::sregex_token_iterator(list.begin(), list.end(), link, 1), {});
        EXPECT_EQ(titles, expected) << list;
    }
    for (const char* none : {"resize nowhere", " ", ""})
        EXPECT_EQ(AHSearch(name.get(), text(none).get()), kAHInternalErr) << none;
    setenv("PATH", "/nowhere", 1);
    EXPECT_EQ(AHGotoPage(name.get(), nullptr, nullptr), kAHConfigErr);
}

TEST_F(Help, FailuresLeaveNothing) {
    writePage("a.html", "word");
    ASSERT_EQ(registerBook("Book", "Help 1"), noErr);
    const auto name = text("Book"), word = text("word");
    for (UInt32 nth = 1, failed = 1; failed > 0; ++nth) {
        const NoLeaks leaks;
        failed = failing(nth, false, [&] { AHSearch(name.get(), word.get()); });
    }
    (void)opened();
    for (const auto& each : fs::recursive_directory_iterator(folder.path(".cache")))
        EXPECT_FALSE(each.path().filename().string().starts_with(".Help")) << each.path();
}

TEST(HelpPage, Reads) {
    using Row = std::tuple<std::string, std::string, std::string, std::size_t>;
    const std::string cut(600, 'x');
    for (const auto& [bytes, title, text, anchors] : std::vector<Row>{
             {"<TITLE> A\n &amp; B</TITLE><script>if (a</b>c) '</p>'</SCRIPT >z", "A & B",
              "  A\n & B   z", 0},
             {"&#65;&#x42&euro;&amp;lt;&#0;&#xD800;&#99999999999;", "",
              "AB&euro;&lt;&#0;&#xD800;&#99999999999;", 0},
             {"<p id = 'a&quot;' id2=x ID=b><a name=c/d>e<input name=f>", "", " e ", 2},
             {"1 < 2 </ 3 <!-- <p id=a> -- > --> <?x <p?> 4", "", "1 < 2 </ 3   4", 0},
             {"<meta http-equiv=content-type content='charset=macintosh'>\x8E", "", " \u00E9", 0},
             {"caf\xE9", "", "caf\u00E9", 0},
             {std::string("\xFE\xFF\0<\0p\0>\0x", 10), "", " x", 0},
             {"<title>" + cut + "\u00E9", cut.substr(0, 512), " " + cut + "\u00E9", 0},
             {"<p id=\"a>b", "", " ", 1}}) {
        const HelpPage page = readHelpPage(asBytes(bytes));
        EXPECT_EQ(page.title, title) << bytes;
        EXPECT_EQ(page.text, text) << bytes;
        EXPECT_EQ(page.anchors.size(), anchors) << bytes;
    }
}

TEST(WithoutDesktop, FrontProcessAndModifierKeys) {
    unsetenv("DISPLAY");
    ProcessSerialNumber front{1, 2};
    const ProcessSerialNumber self{0, kCurrentProcess}, nobody{7, 7};
    EXPECT_EQ(GetFrontProcess(&front), procNotFound);
    EXPECT_EQ(front.highLongOfPSN + front.lowLongOfPSN, 0u);
    EXPECT_EQ(SetFrontProcess(&self), kCannotSetFrontProcessErr);
    EXPECT_EQ(SetFrontProcess(&nobody), procNotFound);
    EXPECT_EQ(WakeUpProcess(&self), noErr);
    EXPECT_EQ(WakeUpProcess(&nobody), procNotFound);

    OSASetCurrentEventKeyModifiers(0xFFFFFFFF);
    EXPECT_EQ(GetCurrentEventKeyModifiers(), 0x1F00u);
    std::thread([] { EXPECT_EQ(GetCurrentEventKeyModifiers(), 0u); }).join();
    OSASetCurrentEventKeyModifiers(0);
}

}  // namespace
}  // namespace osa::test
