// Finding applications, what they are, and the commands that start them.
#include <CoreFoundation/CFRef.h>
#include <CoreServices/Folders.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>
#include <OSA/Diagnostics.h>
#include <OSA/HostFolders.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/cf/StringObject.h"
#include "platform/services/applications/Application.h"
#include "platform/services/applications/DesktopEntry.h"
#include "platform/services/applications/ExecLine.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

class Applications : public testing::Test {
  protected:
    Applications() { OSASetHostFolderRoot(home_.path().c_str()); }
    ~Applications() override {
        OSASetHostFolderRoot(nullptr);
        OSASetApplicationFolders(nullptr);
    }

    std::string entry(const std::string& name, const std::string& lines) const {
        return home_.write(name + ".desktop",
                           "[Desktop Entry]\nType=Application\nExec=/bin/true %F\n" + lines);
    }
    std::string program(const std::string& name) const {
        std::filesystem::permissions(home_.write(name, "#!/bin/sh\n"),
                                     std::filesystem::perms::owner_all);
        return home_.path(name);
    }

    const TemporaryFolder home_;
};

TEST_F(Applications, AreFoundByEveryCriterionAndInTheOrderOfTheirFolders) {
    const std::string data = ".local/share/applications/";
    home_.write("Applications/Old/Deep/Three.app/Contents/PkgInfo", "APPLthre");
    home_.write("Applications/Old/Quill.app/Contents/PkgInfo", "APPLquil");
    home_.write("Applications/Kit.app/Contents/PkgInfo", "FMWKkit ");
    home_.write("Applications/Pen.app/Contents/PkgInfo", "APPLpen ");
    home_.write("Applications/Pen.app/Contents/Info.plist",
                "{ CFBundleIdentifier = \"org.example.Pen\"; }");
    entry("Applications/Both", "Name=Own\n");
    entry("first/Both",
          "Name=The Host's\nX-OSA-Signature=\xC3\xA4"
          "b\\s\\s\n");
    entry(data + "Both", "X-OSA-Signature=late\n");
    entry("first/Gone", "Hidden=true\n");
    entry(data + "Gone", "X-OSA-Signature=gone\n");
    entry(data + "Menuless", "NoDisplay=true\nX-OSA-Signature=menu\n");
    entry(data + "kit/draw/Tool", "Name=Tool\nName[xx]=Outil\n");
    entry(data + "Missing", "TryExec=/none/such\nX-OSA-Signature=miss\n");
    entry(data + "Five", "X-OSA-Signature=fives\n");
    home_.write(data + "Link.desktop", "[Desktop Entry]\nType=Link\nX-OSA-Signature=link\n");
    home_.write("first/Broken.desktop", "nothing");
    entry(data + "Broken", "X-OSA-Signature=brok\n");
    entry(data + "\xFF", "X-OSA-Signature=late\n");
    std::filesystem::create_directory_symlink(home_.path(data), home_.path(data + "circle"));
    std::filesystem::create_symlink("Loop.desktop", home_.path(data + "Loop.desktop"));
    OSASetApplicationFolders((home_.path("none") + ":relative:" + home_.path("first")).c_str());
    const struct {
        OSType creator;
        CFStringRef bundleID;
        CFStringRef name;
        OSStatus status;
        std::string path;
    } rows[] = {
        {FourCC("quil"), nullptr, nullptr, noErr, "Applications/Old/Quill.app"},
        {0, CFSTR("ORG.example.pen"), nullptr, noErr, "Applications/Pen.app"},
        {0, nullptr, CFSTR("Pen"), noErr, "Applications/Pen.app"},
        {0, nullptr, CFSTR("quill.APP"), noErr, "Applications/Old/Quill.app"},
        {FourCC("quil"), CFSTR("org.example.Pen"), nullptr, kLSApplicationNotFoundErr, ""},
        {FourCC("thre"), nullptr, nullptr, kLSApplicationNotFoundErr, ""},  // too deep
        {FourCC("kit "), nullptr, nullptr, kLSApplicationNotFoundErr, ""},
        {0, CFSTR("both"), nullptr, noErr, "first/Both.desktop"},
        {FourCC("\x8A"
                "b  "),
         nullptr, nullptr, noErr, "first/Both.desktop"},
        {FourCC("late"), nullptr, nullptr, kLSApplicationNotFoundErr, ""},  // hidden, or no text
        {0, nullptr, CFSTR("Own"), kLSApplicationNotFoundErr, ""},
        {0, CFSTR("Gone"), nullptr, kLSApplicationNotFoundErr, ""},
        {FourCC("gone"), nullptr, nullptr, kLSApplicationNotFoundErr, ""},
        {FourCC("menu"), nullptr, nullptr, noErr, data + "Menuless.desktop"},
        {0, CFSTR("Kit-Draw-tool"), nullptr, noErr, data + "kit/draw/Tool.desktop"},
        {0, nullptr, CFSTR("tool.desktop"), noErr, data + "kit/draw/Tool.desktop"},
        {0, nullptr, CFSTR("the host's"), noErr, "first/Both.desktop"},
        {FourCC("miss"), nullptr, nullptr, kLSApplicationNotFoundErr, ""},
        {FourCC("five"), nullptr, nullptr, kLSApplicationNotFoundErr, ""},
        {FourCC("link"), nullptr, nullptr, kLSApplicationNotFoundErr, ""},
        {0, CFSTR("Broken"), nullptr, noErr, data + "Broken.desktop"},
        {0, CFSTR("circle-Five"), nullptr, kLSApplicationNotFoundErr, ""},
        {0, CFSTR("../Applications/Both"), nullptr, kLSApplicationNotFoundErr, ""},
        {0, CFSTR(""), nullptr, kLSApplicationNotFoundErr, ""},
        {0, nullptr, nullptr, paramErr, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const CFIndex before = OSALiveObjectCount();
        FSRef ref{};
        {
            CFRef<CFURLRef> url;
            EXPECT_EQ(
                LSFindApplicationForInfo(row.creator, row.bundleID, row.name, &ref, url.out()),
                row.status);
            EXPECT_EQ(static_cast<bool>(url), row.status == noErr);
        }
        UInt8 path[4096] = "";
        EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path) == noErr, row.status == noErr);
        EXPECT_EQ(reinterpret_cast<char*>(path), row.path.empty() ? "" : home_.path(row.path));
        EXPECT_EQ(OSALiveObjectCount(), before);
    }
    EXPECT_EQ(desktopEntryPath("Gone"), home_.path("first/Gone.desktop"));
    EXPECT_EQ(desktopEntryPath("kit-draw-Tool"), home_.path(data + "kit/draw/Tool.desktop"));
    EXPECT_EQ(desktopEntryPath("..-first-Both"), std::nullopt);
    EXPECT_EQ(applicationAt(*desktopEntryPath("kit-draw-Tool"))->identifier, "kit-draw-Tool");
}

TEST_F(Applications, AreWhatLiesAtAPathWithTheCommandsThatStartIt) {
    home_.write("Pen.app/Contents/PkgInfo", "APPLpen ");
    program("Pen.app/Contents/Linux/Pen");
    home_.write("Empty.app/Contents/PkgInfo", "APPLnone");
    home_.write("plain", "");
    home_.write("Link.desktop", "[Desktop Entry]\nType=Link\n");
    program("bin/tool");
    const std::string tool = "Exec=" + home_.path("bin/tool") + " %F\n";
    home_.write("Draw.desktop",
                "[Desktop Entry]\nType=Application\nName=Draw It\nPath=/usr\n" + tool);
    entry("Old", "Exec=no longer the first\nTryExec=/none/such\n");
    home_.write("Bad.desktop", "[Desktop Entry]\nType=Application\nExec=/bin/true; rm\n");
    const std::string document = home_.write("a b\n\"c\"", "");
    const struct {
        const char* path;
        OSStatus isApplication;
        OSStatus starts;
        const char* program;
        const char* name;
        const char* folder;
    } rows[] = {
        {"Pen.app", noErr, noErr, "Pen.app/Contents/Linux/Pen", "Pen", ""},
        {"Empty.app/", noErr, kLSNoExecutableErr, "", "Empty", ""},
        {"bin", kLSNotAnApplicationErr, 0, "", "", ""},
        {"plain", kLSNotAnApplicationErr, 0, "", "", ""},
        {"Link.desktop", kLSNotAnApplicationErr, 0, "", "", ""},
        {"none", fnfErr, 0, "", "", ""},
        {"bin/tool", noErr, noErr, "bin/tool", "tool", ""},
        {"Draw.desktop", noErr, noErr, "bin/tool", "Draw It", "/usr"},
        {"Old.desktop", noErr, kLSNoExecutableErr, "", "Old", ""},
        {"Bad.desktop", noErr, kLSNoExecutableErr, "", "Bad", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        const auto application = applicationAt(home_.path(row.path));
        ASSERT_EQ(application.status(), row.isApplication);
        if (!application.ok()) continue;
        EXPECT_EQ(application->name, row.name);
        const auto commands = commandsOf(*application, {document});
        ASSERT_EQ(commands.status(), row.starts);
        if (!commands.ok()) continue;
        ASSERT_EQ(commands->size(), 1U);
        EXPECT_EQ(commands->front().program, home_.path(row.program));
        EXPECT_EQ(commands->front().arguments.size(), 2U);
        EXPECT_EQ(commands->front().arguments.back(), document);
        EXPECT_EQ(commands->front().folder, row.folder);
    }
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(home_.path("Draw.desktop").c_str()),
                            &ref, nullptr),
              noErr);
    CFRef<CFStringRef> shown;
    EXPECT_EQ(LSCopyDisplayNameForRef(&ref, shown.out()), noErr);
    EXPECT_EQ(utf8Of(shown.get()), "Draw It");
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    LSItemInfoRecord info;
    ASSERT_EQ(LSCopyItemInfoForURL(url.get(), kLSRequestAllInfo, &info), noErr);
    CFRelease(info.extension);
    EXPECT_EQ(info.flags, +kLSItemInfoIsApplication | +kLSItemInfoIsPlainFile);
    EXPECT_EQ(info.filetype, FourCC("APPL"));
}

TEST_F(Applications, RunInTheTerminalThatThereIs) {
    entry("Shell", "Terminal=true\n");
    const std::string path = getenv("PATH");
    setenv("PATH", home_.path("bin").c_str(), 1);
    const auto application = applicationAt(home_.path("Shell.desktop"));
    ASSERT_TRUE(application.ok());
    EXPECT_EQ(commandsOf(*application, {}).status(), kLSNoExecutableErr);
    using Arguments = std::vector<std::string>;
    const std::string old = program("bin/x-terminal-emulator");
    auto commands = commandsOf(*application, {"/x"});
    EXPECT_EQ(commands->front().program, old);
    EXPECT_EQ(commands->front().arguments,
              (Arguments{"x-terminal-emulator", "-e", "/bin/true", "/x"}));
    program("bin/xdg-terminal-exec");
    commands = commandsOf(*application, {"/x"});
    EXPECT_EQ(commands->front().arguments, (Arguments{"xdg-terminal-exec", "/bin/true", "/x"}));
    setenv("PATH", path.c_str(), 1);
}

/// Arguments between "|", commands between " || "; "invalid" for no line.
std::string expand(std::string_view text, const std::vector<std::string>& documents) {
    const auto line = ExecLine::parse(text);
    if (!line) return "invalid";
    std::string all;
    for (const auto& arguments :
         line->commands({"pic", "A \"Name\" %f", "/e.desktop"}, documents)) {
        if (!all.empty()) all += " || ";
        for (std::size_t i = 0; i < arguments.size(); ++i) all += (i > 0 ? "|" : "") + arguments[i];
    }
    return all;
}

TEST(ExecLine, FollowsTheRules) {
    const std::vector<std::string> none;
    const std::vector<std::string> two{"/a b", "/-$(x)%F\"\n"};
    const struct {
        std::string line;
        const char* plain;
        const char* withTwo;
    } rows[] = {
        {"  p  -x ", "p|-x", "p|-x"},
        {"p %f", "p", "p|/a b || p|/-$(x)%F\"\n"},
        {"p --f=%u", "p|--f=", "p|--f=file:///a%20b || p|--f=file:///-$(x)%25F%22%0A"},
        {"p %F -z", "p|-z", "p|/a b|/-$(x)%F\"\n|-z"},
        {"p %U", "p", "p|file:///a%20b|file:///-$(x)%25F%22%0A"},
        {"p %i %c %k 5%% %d%m %v", "p|--icon|pic|A \"Name\" %f|/e.desktop|5%",
         "p|--icon|pic|A \"Name\" %f|/e.desktop|5%"},
        {R"("a p" "b\"\`\$\\c" "\d $e" "")", R"(a p|b"`$\c|\d $e|)", R"(a p|b"`$\c|\d $e|)"},
        {R"(p --a="x y"z "%f")", "p|--a=x yz|%f", "p|--a=x yz|%f"},
        {"", "invalid", "invalid"},
        {"%f", "invalid", "invalid"},
        {"%c x", "invalid", "invalid"},
        {"p%k", "invalid", "invalid"},
        {"\"\" x", "invalid", "invalid"},
        {"p %f %U", "invalid", "invalid"},
        {"p --all=%F", "invalid", "invalid"},
        {"p x%i", "invalid", "invalid"},
        {"p %x", "invalid", "invalid"},
        {"p %", "invalid", "invalid"},
        {"p \"open", "invalid", "invalid"},
        {"p a;b", "invalid", "invalid"},
        {"p $HOME", "invalid", "invalid"},
        {"p a\tb", "invalid", "invalid"},
        {"p '%f'", "invalid", "invalid"},
        {"p " + std::string(40000, 'x'), "invalid", "invalid"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(expand(row.line, none), row.plain) << row.line.substr(0, 60);
        EXPECT_EQ(expand(row.line, two), row.withTwo) << row.line.substr(0, 60);
    }
}

TEST(DesktopEntry, SpeaksTheUsersLanguageAndSurvivesDamage) {
    const auto entry = DesktopEntry::parse(asBytes(
        "\xEF\xBB\xBF# [Desktop Entry]\nName=before\n[Other]\nName=other\n[Desktop Entry] \r\n"
        "Name[=damaged\nName[]=damaged\nName=\xFF\nName = \\splain\\t\\\\n\\;\r\nName=second\n"
        "Name[de]=de\nName[de_AT]=de_AT\nName[de@euro]=de@euro\nHidden=true \n"
        "[Action]\nExec=p\n[Desktop Entry]\nExec=p\n"));
    ASSERT_TRUE(entry);
    const struct {
        const char* locale;
        const char* name;
    } rows[] = {
        {"de_AT.UTF-8@euro", "de_AT"}, {"de_CH@euro", "de@euro"},
        {"de_CH.UTF-8", "de"},         {"de", "de"},
        {"fr_FR", " plain\t\\n\\;"},   {"C", " plain\t\\n\\;"},
        {"", " plain\t\\n\\;"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(entry->localText("Name", languagesOfLocale(row.locale)), row.name) << row.locale;
    EXPECT_TRUE(entry->isTrue("Hidden"));
    EXPECT_EQ(entry->text("Exec"), "") << "of another group";
    EXPECT_FALSE(DesktopEntry::parse(asBytes("[Desktop Entry\nName=x")));
}

TEST_F(Applications, FoldersOfTheUserLieWhereTheyAreSaidToBe) {
    home_.write(".config/user-dirs.dirs",
                "# XDG_DESKTOP_DIR=\"/x\"\nXDG_DESKTOP_DIR=\"$HOME/Schreib\\\"tisch\"\n"
                "XDG_DESKTOP_DIR=\"relative\"\nXDG_DOCUMENTS_DIR=\"$HOME/\"\n");
    const struct {
        OSType type;
        const char* path;
    } rows[] = {{kDesktopFolderType, "Schreib\"tisch"}, {kDocumentsFolderType, "Documents"}};
    for (const auto& row : rows) {
        FSRef ref;
        UInt8 path[4096] = "";
        EXPECT_EQ(FSFindFolder(kLocalDomain, row.type, kDontCreateFolder, &ref), fnfErr);
        ASSERT_EQ(FSFindFolder(kUserDomain, row.type, kCreateFolder, &ref), noErr);
        EXPECT_EQ(FSRefMakePath(&ref, path, sizeof path), noErr);
        EXPECT_EQ(reinterpret_cast<char*>(path), home_.path(row.path));
    }
    OSASetHostFolderRoot(nullptr);
    FSRef machine;
    EXPECT_EQ(FSFindFolder(kLocalDomain, kCachedDataFolderType, kDontCreateFolder, &machine),
              noErr);
}

}  // namespace
}  // namespace osa::test
