// Finding applications, what they are, and the commands that start them.
#include <CoreServices/Folders.h>
#include <CoreServices/LaunchServices.h>
#include <OSA/HostFolders.h>

#include "platform/cf/StringObject.h"
#include "platform/services/applications/Application.h"
#include "platform/services/applications/DesktopEntry.h"
#include "platform/services/applications/ExecLine.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

CFRef<CFStringRef> text(const char* utf8) {
    return CFRef<CFStringRef>::Adopt(utf8 == nullptr ? nullptr
                                                     : createString(std::string_view(utf8)));
}

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
        fs::permissions(home_.write(name, "#!/bin/sh\n"), fs::perms::owner_all);
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
    entry("first/Both", "Name=The Host's\nX-OSA-Signature=\xC3\xA4g\\s\\s\n");
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
    fs::create_directory_symlink(home_.path(data), home_.path(data + "circle"));
    home_.write("opt/Set.app/Contents/PkgInfo", "APPLset ");
    fs::create_directory_symlink("../opt", home_.path("Applications/opt"));
    fs::create_directory_symlink("../opt/Set.app", home_.path("Applications/S\xC3\xA8t.app"));
    fs::create_symlink("Loop.desktop", home_.path(data + "Loop.desktop"));
    OSASetApplicationFolders((home_.path("none") + ":relative:" + home_.path("first")).c_str());
    // Creator, identifier, name; found where: empty when nowhere.
    const std::tuple<OSType, const char*, const char*, std::string> rows[] = {
        {'quil', nullptr, nullptr, "Applications/Old/Quill.app"},
        {0, "ORG.example.pen", nullptr, "Applications/Pen.app"},
        {0, nullptr, "Pen", "Applications/Pen.app"},
        {0, nullptr, "quill.APP", "Applications/Old/Quill.app"},
        {'quil', "org.example.Pen", nullptr, ""},
        {'thre', nullptr, nullptr, ""},  // too deep
        {'kit ', nullptr, nullptr, ""},
        {'set ', nullptr, "SE\xCC\x80T", "opt/Set.app"},
        {'set ', nullptr, "Set", ""},  // the link has the name
        {0, "both", nullptr, "first/Both.desktop"},
        {0x8A672020, nullptr, nullptr, "first/Both.desktop"},
        {'late', nullptr, nullptr, ""},  // hidden, or no text
        {0, nullptr, "Own", ""},
        {0, "Gone", nullptr, ""},
        {'gone', nullptr, nullptr, ""},
        {'menu', nullptr, nullptr, data + "Menuless.desktop"},
        {0, "Kit-Draw-tool", nullptr, data + "kit/draw/Tool.desktop"},
        {0, nullptr, "tool.desktop", data + "kit/draw/Tool.desktop"},
        {0, nullptr, "the host's", "first/Both.desktop"},
        {'miss', nullptr, nullptr, ""},
        {'five', nullptr, nullptr, ""},
        {'link', nullptr, nullptr, ""},
        {0, "Broken", nullptr, data + "Broken.desktop"},
        {0, "circle-Five", nullptr, ""},
        {0, "../Applications/Both", nullptr, ""},
        {0, "", nullptr, ""},
    };
    for (const auto& [creator, identifier, name, path] : rows) {
        SCOPED_TRACE(std::to_string(creator) + " " + path);
        const NoLeaks leaks;
        FSRef ref{};
        CFRef<CFURLRef> url;
        EXPECT_EQ(LSFindApplicationForInfo(creator, text(identifier).get(), text(name).get(), &ref,
                                           url.out()),
                  path.empty() ? kLSApplicationNotFoundErr : noErr);
        EXPECT_EQ(static_cast<bool>(url), !path.empty());
        EXPECT_EQ(pathOf(ref), path.empty() ? "status -1401" : home_.path(path));
    }
    EXPECT_EQ(LSFindApplicationForInfo(0, nullptr, nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(desktopEntryPath("Gone"), home_.path("first/Gone.desktop"));
    EXPECT_EQ(desktopEntryPath("kit-draw-Tool"), home_.path(data + "kit/draw/Tool.desktop"));
    entry("Up", "");
    EXPECT_EQ(desktopEntryPath("..-Up"), std::nullopt);
    EXPECT_EQ(applicationAt(*desktopEntryPath("kit-draw-Tool"))->identifier, "kit-draw-Tool");
}

TEST_F(Applications, AreWhatLiesAtAPathWithTheCommandsThatStartIt) {
    home_.write("Pen.app/Contents/PkgInfo", "APPLpen ");
    program("Pen.app/Contents/Linux/Pen");
    home_.write("Empty.app/Contents/PkgInfo", "APPLnone");
    home_.write("plain", "");
    home_.write("Link.desktop", "[Desktop Entry]\nType=Link\n");
    program("bin/tool");
    home_.write("Pen.app/Contents/Info.plist",
                "<plist><dict><key>LSBackgroundOnly</key><integer>1</integer></dict></plist>");
    const std::string tool = "Exec=" + home_.path("bin/tool") + " %F\n";
    home_.write("Draw.desktop",
                "[Desktop Entry]\nType=Application\nName=Draw It\nPath=/usr\n" + tool);
    home_.write("Locked.desktop",
                "[Desktop Entry]\nType=Application\nName=L\nExec=" + home_.path("plain") + "\n");
    entry("Old", "Exec=no longer the first\nTryExec=/none/such\n");
    home_.write("Bad.desktop", "[Desktop Entry]\nType=Application\nExec=/bin/true; rm\n");
    const std::string document = home_.write("a b\n\"c\"", "");
    using Row = std::tuple<const char*, OSStatus, OSStatus, const char*, const char*, const char*>;
    const Row rows[] = {
        {"Pen.app", noErr, noErr, "Pen.app/Contents/Linux/Pen", "Pen", ""},
        {"Empty.app/", noErr, kLSNoExecutableErr, "", "Empty", ""},
        {"bin", kLSNotAnApplicationErr, 0, "", "", ""},
        {"plain", kLSNotAnApplicationErr, 0, "", "", ""},
        {"Link.desktop", kLSNotAnApplicationErr, 0, "", "", ""},
        {"none", fnfErr, 0, "", "", ""},
        {"bin/tool", noErr, noErr, "bin/tool", "tool", ""},
        {"Draw.desktop", noErr, noErr, "bin/tool", "Draw It", "/usr"},
        {"Locked.desktop", noErr, kLSNoLaunchPermissionErr, "", "L", ""},
        {"Old.desktop", noErr, kLSNoExecutableErr, "", "Old", ""},
        {"Bad.desktop", noErr, kLSNoExecutableErr, "", "Bad", ""},
    };
    for (const auto& [path, isApplication, starts, program, name, folder] : rows) {
        SCOPED_TRACE(path);
        const auto application = applicationAt(home_.path(path));
        ASSERT_EQ(application.status(), isApplication);
        if (!application.ok()) continue;
        EXPECT_EQ(application->name, name);
        EXPECT_EQ(application->isBackgroundOnly, application->name == "Pen");
        const auto commands = commandsOf(*application, {document});
        ASSERT_EQ(commands.status(), starts);
        if (!commands.ok()) continue;
        ASSERT_EQ(commands->size(), 1U);
        EXPECT_EQ(commands->front().program, home_.path(program));
        EXPECT_EQ(commands->front().arguments.size(), 2U);
        EXPECT_EQ(commands->front().arguments.back(), document);
        EXPECT_EQ(commands->front().folder, folder);
    }
    FSRef ref;
    OSASetApplicationFolders(home_.path().c_str());
    ASSERT_EQ(LSFindApplicationForInfo(0, nullptr, CFSTR("draw it"), &ref, nullptr), noErr);
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
    entry("Shell", "Terminal=true\nPath=relative\n");
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
    EXPECT_EQ(commands->front().folder, "");
    program("bin/xdg-terminal-exec");
    commands = commandsOf(*application, {"/x"});
    EXPECT_EQ(commands->front().arguments, (Arguments{"xdg-terminal-exec", "/bin/true", "/x"}));
    setenv("PATH", path.c_str(), 1);
}

/// Arguments between "|", commands between " || ".
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
    const std::vector<std::string> two{"/a b", "/-$(x)%F\"\n"};
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"  p  -x ", "p|-x", "p|-x"},
        {"p %f", "p", "p|/a b || p|/-$(x)%F\"\n"},
        {"p --f=%u", "p|--f=", "p|--f=file:///a%20b || p|--f=file:///-$(x)%25F%22%0A"},
        {"p %F -z", "p|-z", "p|/a b|/-$(x)%F\"\n|-z"},
        {"p %U", "p", "p|file:///a%20b|file:///-$(x)%25F%22%0A"},
        {"p %i %c %k 5%% %d%m %v", "p|--icon|pic|A \"Name\" %f|/e.desktop|5%",
         "p|--icon|pic|A \"Name\" %f|/e.desktop|5%"},
        {R"("a p" "b\"\`\$\\c" "\d $e" "")", R"(a p|b"`$\c|\d $e|)", R"(a p|b"`$\c|\d $e|)"},
        {R"(p --a="x y"z "%f")", "p|--a=x yz|%f", "p|--a=x yz|%f"},
    };
    for (const auto& [line, plain, withTwo] : rows) {
        EXPECT_EQ(expand(line, {}), plain) << line;
        EXPECT_EQ(expand(line, two), withTwo) << line;
    }
    for (const std::string& line : std::vector<std::string>{
             "", "%f", "%c x", "p%k", "\"\" x", "p %f %U", "p --all=%F", "p x%i", "p %x", "p %",
             "p \"open", "p a;b", "p $HOME", "p a\tb", "p '%f'", "p " + std::string(40000, 'x')})
        EXPECT_FALSE(ExecLine::parse(line)) << line.substr(0, 60);
}

TEST(DesktopEntry, SpeaksTheUsersLanguageAndSurvivesDamage) {
    const auto entry = DesktopEntry::parse(asBytes(
        "\xEF\xBB\xBF# [Desktop Entry]\nName=before\n[Other]\nName=other\n[Desktop Entry] \r\n"
        "Name[=damaged\nName[]=damaged\nName=\xFF\nName = \\splain\\t\\\\n\\;\r\nName=second\n"
        "Name[de]=de\nName[de_AT]=de_AT\nName[de@euro]=de@euro\nHidden=true \n"
        "[Action]\nExec=p\n[Desktop Entry]\nExec=p\n"));
    ASSERT_TRUE(entry);
    const std::tuple<const char*, const char*> rows[] = {
        {"de_AT.UTF-8@euro", "de_AT"}, {"de_CH@euro", "de@euro"},
        {"de_CH.UTF-8", "de"},         {"de", "de"},
        {"fr_FR", " plain\t\\n\\;"},   {"C", " plain\t\\n\\;"},
        {"", " plain\t\\n\\;"},
    };
    for (const auto& [locale, name] : rows)
        EXPECT_EQ(entry->localText("Name", languagesOfLocale(locale)), name) << locale;
    EXPECT_TRUE(entry->isTrue("Hidden"));
    EXPECT_EQ(entry->text("Exec"), "") << "of another group";
    EXPECT_FALSE(DesktopEntry::parse(asBytes("[Desktop Entry\nName=x")));
}

TEST_F(Applications, FoldersOfTheUserLieWhereTheyAreSaidToBe) {
    home_.write(".config/user-dirs.dirs",
                "# XDG_DESKTOP_DIR=\"/x\"\nXDG_DESKTOP_DIR=\"$HOME/Schreib\\\"tisch\"\n"
                "XDG_DESKTOP_DIR=\"relative\"\nXDG_DOCUMENTS_DIR=\"$HOME/\"\n");
    const std::tuple<OSType, const char*> rows[] = {{kDesktopFolderType, "Schreib\"tisch"},
                                                    {kDocumentsFolderType, ""}};
    for (const auto& [type, path] : rows) {
        FSRef ref;
        ASSERT_EQ(FSFindFolder(kUserDomain, type, kCreateFolder, &ref), noErr);
        EXPECT_EQ(pathOf(ref) + (*path == 0 ? "/" : ""), home_.path(path));
    }
    OSASetHostFolderRoot(nullptr);
    entry("share/applications/a/Mine", "");
    setenv("XDG_DATA_DIRS", ("relative:" + home_.path("share")).c_str(), 1);
    EXPECT_EQ(findApplication({0, "A-mine", ""})->path,
              home_.path("share/applications/a/Mine.desktop"));
    unsetenv("XDG_DATA_DIRS");
    FSRef machine;
    EXPECT_EQ(FSFindFolder(kLocalDomain, kCachedDataFolderType, kDontCreateFolder, &machine),
              noErr);
}

}  // namespace
}  // namespace osa::test
