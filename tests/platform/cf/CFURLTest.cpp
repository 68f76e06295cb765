// CFURL: text, resolution, paths and components.
#include "tests/platform/cf/CFTestSupport.h"

namespace {

using URLRef = CFRef<CFURLRef>;

using std::string_view_literals::operator""sv;

class CFURLTest : public CFTest {};

URLRef makeURL(std::string_view url, CFURLRef base = nullptr) {
    return URLRef::Adopt(CFURLCreateWithString(nullptr, makeString(url).get(), base));
}

URLRef makePathURL(std::string_view path, bool isDirectory = false,
                   CFURLPathStyle style = kCFURLPOSIXPathStyle) {
    return URLRef::Adopt(
        CFURLCreateWithFileSystemPath(nullptr, makeString(path).get(), style, isDirectory));
}

std::string urlText(const URLRef& url) {
    return url ? text(CFURLGetString(url.get())) : "(null)";
}

std::string takenURL(CFURLRef url) {
    return urlText(URLRef::Adopt(url));
}

std::string absolute(const URLRef& url) {
    return takenURL(CFURLCopyAbsoluteURL(url.get()));
}

std::string pathOf(const URLRef& url, CFURLPathStyle style = kCFURLPOSIXPathStyle) {
    return taken(CFURLCopyFileSystemPath(url.get(), style));
}

TEST_F(CFURLTest, RefusesTextThatIsNoURL) {
    for (const char* good : {"file:///a%20b", "a", "mailto:a@b", "http://h/p?q#f", "?q", "//h"})
        EXPECT_EQ(urlText(makeURL(good)), good);
    for (const char* bad : {"", "a b", "a\"b", "a<b", "a[b", "a{b", "a\\b", "a^b", "a`b", "a|b",
                            "a\u00E9", "a%", "a%2", "a%zz", "a\nb", "a\x7F"})
        EXPECT_FALSE(makeURL(bad)) << bad;
    EXPECT_EQ(CFURLCreateWithString(nullptr, nullptr, nullptr), nullptr);
}

TEST_F(CFURLTest, BytesAreEscapedInsteadOfRefused) {
    const std::string_view bytes = "file:///a b%20%\xC3\xA9\0"sv.substr(0, 19);
    const auto url = URLRef::Adopt(
        CFURLCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                             static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8, nullptr));
    EXPECT_EQ(urlText(url), "file:///a%20b%20%25%C3%A9%00");
    UInt8 path[64];
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, path, 64)) << "has a zero in it";
    EXPECT_EQ(CFURLCreateWithBytes(nullptr, path, 2, kCFStringEncodingUTF16, nullptr), nullptr);
}

TEST_F(CFURLTest, ResolvesReferences) {
    const std::tuple<const char*, const char*> rows[] = {
        {"g", "http://a/b/c/g"},
        {"./g/", "http://a/b/c/g/"},
        {"/g", "http://a/g"},
        {"//g", "http://g"},
        {"?y", "http://a/b/c/d;p?y"},
        {"#s", "http://a/b/c/d;p?q#s"},
        {"", "http://a/b/c/d;p?q"},
        {".", "http://a/b/c/"},
        {"..", "http://a/b/"},
        {"../../../g", "http://a/g"},
        {"g?y/../x", "http://a/b/c/g?y/../x"},
        {"./../g", "http://a/b/g"},
        {"file:///x/../y", "file:///x/../y"},
        {"g;x=1/../y", "http://a/b/c/y"},
    };
    const URLRef base = makeURL("http://a/b/c/d;p?q");
    for (const auto& [reference, result] : rows) {
        SCOPED_TRACE(reference);
        EXPECT_EQ(absolute(makeURL(reference, base.get())), result);
    }
    EXPECT_EQ(absolute(makeURL("x", makeURL("y/z", base.get()).get())), "http://a/b/c/y/x");
}

struct PathRow {
    const char *name, *path;
    CFURLPathStyle style;
    bool isDirectory;
    const char *url, *posix, *hfs;
};

const PathRow kPathRows[] = {
    {"plain file", "/a/b", 0, false, "file:///a/b", "/a/b", "Linux:a:b"},
    {"folder", "/a/b", 0, true, "file:///a/b/", "/a/b", "Linux:a:b"},
    {"slash of a file is dropped", "/a/b//", 0, false, "file:///a/b", "/a/b", "Linux:a:b"},
    {"the root", "/", 0, false, "file:///", "/", "Linux"},
    {"special characters", "/a b/%41#?;", 0, false, "file:///a%20b/%2541%23%3F%3B", "/a b/%41#?;",
     "Linux:a b:%41#?;"},
    {"colon and slash change places", "/a:b", 0, false, "file:///a:b", "/a:b", "Linux:a/b"},
    {"beyond ASCII", "/\u00E9", 0, false, "file:///%C3%A9", "/\u00E9", "Linux:\u00E9"},
    {"HFS path", "Linux:a/b:c", 1, false, "file:///a:b/c", "/a:b/c", "Linux:a/b:c"},
    {"HFS volume", "linux:", 1, true, "file:///", "/", "Linux"},
    {"HFS folder with colon", "Linux:a:", 1, false, "file:///a", "/a", "Linux:a"},
    {"other HFS volume", "Disk:a", 1, false, "file:///Volumes/Disk/a", "/Volumes/Disk/a",
     "Linux:Volumes:Disk:a"},
    {"HFS going up", "Linux:a::b", 1, false, "file:///a/../b", "/a/../b", "Linux:a::b"},
    {"partial HFS path", ":a:b", 1, false, "a/b", "a/b", ":a:b"},
    {"relative with a colon", "a:b", 0, false, "./a:b", "./a:b", ":a/b"},
    {"Windows style", "C:\\a", 2, false, "(null)", "(null)", "(null)"},
    {"empty", "", 0, false, "(null)", "(null)", "(null)"},
};

TEST_F(CFURLTest, PathsOfBothStyles) {
    for (const PathRow& row : kPathRows) {
        SCOPED_TRACE(row.name);
        const URLRef url = makePathURL(row.path, row.isDirectory, row.style);
        EXPECT_EQ(urlText(url), row.url);
        EXPECT_EQ(pathOf(url), row.posix);
        EXPECT_EQ(pathOf(url, kCFURLHFSPathStyle), row.hfs);
    }
    EXPECT_EQ(absolute(makePathURL("x")),
              "file://" + std::filesystem::current_path().string() + "/x");
}

TEST_F(CFURLTest, PathsAnswerAsTheirTextDoes) {
    for (const char* path : {"/", "/a", "/a b/c;d?", "/a/..", "/a/.", "//a//", "/%41/caf\u00E9"}) {
        for (const bool isDirectory : {false, true}) {
            SCOPED_TRACE(std::string(path) + (isDirectory ? " as a folder" : ""));
            const URLRef fresh = makePathURL(path, isDirectory);
            const URLRef same = makeURL(urlText(makePathURL(path, isDirectory)));
            EXPECT_EQ(CFURLHasDirectoryPath(fresh.get()), CFURLHasDirectoryPath(same.get()));
            EXPECT_EQ(pathOf(fresh), pathOf(same));
            EXPECT_EQ(CFHash(fresh.get()), CFHash(same.get()));
            EXPECT_TRUE(CFEqual(fresh.get(), same.get()));
        }
    }
}

TEST_F(CFURLTest, ThreadsThatAskFirstGetOneText) {
    for (int round = 0; round < 200; ++round) {
        const URLRef url = makePathURL("/a folder/a file");
        CFStringRef texts[4] = {};
        std::thread threads[4];
        for (std::size_t i = 0; i < 4; ++i)
            threads[i] = std::thread([&, i] { texts[i] = CFURLGetString(url.get()); });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(text(texts[0]), "file:///a%20folder/a%20file");
        for (const CFStringRef other : texts) ASSERT_EQ(other, texts[0]);
    }
}

TEST_F(CFURLTest, AnyUnixPathSurvives) {
    const std::string_view path = "/caf\x8E/\x01";
    const auto url = URLRef::Adopt(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()),
        false));
    EXPECT_EQ(urlText(url), "file:///caf%8E/%01");
    EXPECT_EQ(pathOf(url), "(null)") << "is no UTF-8";
    char back[8] = {};
    EXPECT_FALSE(
        CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(back), 7));
    EXPECT_TRUE(
        CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(back), 8));
    EXPECT_EQ(back, path);
    UInt8 buffer[64];
    for (const char* bad :
         {"http://h/a", "file://host/a", "file:///a%2Fb", "file:///%00", "file:a"})
        EXPECT_FALSE(CFURLGetFileSystemRepresentation(makeURL(bad).get(), true, buffer, 64)) << bad;
    EXPECT_TRUE(
        CFURLGetFileSystemRepresentation(makeURL("FILE://localhost/a/").get(), true, buffer, 64));
    EXPECT_STREQ(reinterpret_cast<char*>(buffer), "/a");
}

TEST_F(CFURLTest, ExistingFoldersAreBasesWithoutASlash) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / "osa url base.scptd";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "file").put('x');
    const std::string at = "file://" + std::filesystem::temp_directory_path().string() + "/";
    const auto relative = [](const URLRef& base) {
        return absolute(URLRef::Adopt(CFURLCreateWithFileSystemPathRelativeToBase(
            nullptr, CFSTR("Contents/List"), kCFURLPOSIXPathStyle, false, base.get())));
    };
    EXPECT_EQ(relative(makePathURL(folder.string())), at + "osa%20url%20base.scptd/Contents/List");
    EXPECT_EQ(relative(makePathURL((folder / "file").string())),
              at + "osa%20url%20base.scptd/Contents/List");
    EXPECT_EQ(relative(makePathURL((folder / "gone").string(), true)),
              at + "osa%20url%20base.scptd/gone/Contents/List");
    std::filesystem::remove_all(folder);
    EXPECT_EQ(relative(makePathURL(folder.string())), at + "Contents/List");
}

struct ComponentRow {
    const char *url, *last, *extension;
    const char* appended;  ///< with "x y" as a folder
    const char *deleted, *withoutExtension;
    bool isDirectory;
};

const ComponentRow kComponentRows[] = {
    {"file:///a/b%20c.d", "b c.d", "d", "file:///a/b%20c.d/x%20y/", "file:///a/", "file:///a/b%20c",
     false},
    {"file:///a/b.d/", "b.d", "d", "file:///a/b.d/x%20y/", "file:///a/", "file:///a/b/", true},
    {"file:///", "/", "(null)", "file:///x%20y/", "(null)", "file:///", true},
    {"file://", "", "(null)", "file:///x%20y/", "(null)", "file://", false},
    {"http://h/.a?q", ".a", "(null)", "http://h/.a/x%20y/?q", "http://h/", "http://h/.a?q", false},
    {"a", "a", "(null)", "a/x%20y/", "./", "a", false},
    {"a/..", "..", "(null)", "a/../x%20y/", "a/../../", "a/..", true},
    {"mailto:a@b.c", "(null)", "(null)", "(null)", "(null)", "(null)", false},
    {"/%FF", "(null)", "(null)", "/%FF/x%20y/", "/", "/%FF", false},
};

TEST_F(CFURLTest, Components) {
    for (const ComponentRow& row : kComponentRows) {
        SCOPED_TRACE(row.url);
        const URLRef url = makeURL(row.url);
        EXPECT_EQ(taken(CFURLCopyLastPathComponent(url.get())), row.last);
        EXPECT_EQ(taken(CFURLCopyPathExtension(url.get())), row.extension);
        EXPECT_EQ(
            takenURL(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), CFSTR("x y"), true)),
            row.appended);
        EXPECT_EQ(takenURL(CFURLCreateCopyDeletingLastPathComponent(nullptr, url.get())),
                  row.deleted);
        EXPECT_EQ(takenURL(CFURLCreateCopyDeletingPathExtension(nullptr, url.get())),
                  row.withoutExtension);
        EXPECT_EQ(CFURLHasDirectoryPath(url.get()), row.isDirectory);
    }
    EXPECT_EQ(takenURL(CFURLCreateCopyAppendingPathExtension(nullptr, makeURL("file:///a/").get(),
                                                             CFSTR("b c"))),
              "file:///a.b%20c/");
}

TEST_F(CFURLTest, DataIsTheAbsoluteText) {
    const URLRef folder = makePathURL("/a b", true);
    const auto url = URLRef::Adopt(CFURLCreateWithFileSystemPathRelativeToBase(
        nullptr, CFSTR("\u00E9"), kCFURLPOSIXPathStyle, true, folder.get()));
    const auto data =
        CFRef<CFDataRef>::Adopt(CFURLCreateData(nullptr, url.get(), kCFStringEncodingUTF8, true));
    EXPECT_EQ(osa::test::bytesOf(data.get()), "file:///a%20b/%C3%A9/");
    EXPECT_EQ(taken(CFURLCopyScheme(url.get())), "file");
    EXPECT_EQ(taken(CFURLCopyHostName(makeURL("http://u:p@h:80/x").get())), "h");
}

TEST_F(CFURLTest, EscapesInStrings) {
    const auto add = [](const char* string, CFStringRef leave, CFStringRef also,
                        CFStringEncoding encoding) {
        return taken(CFURLCreateStringByAddingPercentEscapes(nullptr, makeString(string).get(),
                                                             leave, also, encoding));
    };
    EXPECT_EQ(add("a b%/\u00E9#\U0001F600", nullptr, nullptr, kCFStringEncodingUTF8),
              "a%20b%25/%C3%A9%23%F0%9F%98%80");
    EXPECT_EQ(add("a b/#\u00E9", CFSTR("# "), CFSTR("/"), kCFStringEncodingMacRoman), "a b%2F#%8E");
    EXPECT_EQ(add("\u4E00", nullptr, nullptr, kCFStringEncodingMacRoman), "(null)");
    const auto replace = [](const char* string, CFStringRef leave) {
        return taken(
            CFURLCreateStringByReplacingPercentEscapes(nullptr, makeString(string).get(), leave));
    };
    EXPECT_EQ(replace("a%20%C3%A9%2f", CFSTR("")), "a \u00E9/");
    EXPECT_EQ(replace("a%20%C3%A9%2f", CFSTR("/\u00E9")), "a %C3%A9%2F");
    EXPECT_EQ(replace("a%20", nullptr), "a%20");
    EXPECT_EQ(replace("a%C3", CFSTR("")), "(null)");
    EXPECT_EQ(replace("a%2", CFSTR("")), "(null)");
}

}  // namespace
