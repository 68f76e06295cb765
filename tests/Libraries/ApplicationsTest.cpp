// The library's applications: a bundle and a desktop entry found, launched, met among the processes
// and gone; keys, required parameters, help. This program runs out of a bundle itself.
#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"

#include <OSA/HostEvents.h>
#include <OSA/HostFolders.h>
#include <signal.h>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "tests/support/Library.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

class Applications : public testing::Test {
  protected:
    Applications() {
        OSASetHostFolderRoot(home_.path().c_str());
        setenv("OSA_LAUNCH_REPORT", home_.path("report").c_str(), 1);
        setenv("XDG_ACTIVATION_TOKEN", "ours", 1);
        unsetenv("DISPLAY");
        home_.write("Applications/Pen.app/Contents/PkgInfo", "APPLOsAp");
        home_.write("Applications/Pen.app/Contents/Info.plist",
                    "{ CFBundleIdentifier = \"org.example.osa.pen\"; CFBundleExecutable = pen; }");
        addProgram("Applications/Pen.app/Contents/Linux/pen");
        addProgram("bin/quill");
        home_.write(".local/share/applications/org.example.osa.quill.desktop",
                    "[Desktop Entry]\nType=Application\nName=Quill\nX-OSA-Signature=OsAq\nExec=" +
                        home_.path("bin/quill") + "\n");
    }
    ~Applications() override { OSASetHostFolderRoot(nullptr); }

    void addProgram(const std::string& place) const {
        fs::create_directories(fs::path(home_.path(place)).parent_path());
        fs::copy_file(std::getenv("OSA_LAUNCHED_PROGRAM"), home_.path(place));
    }
    /// What the program tells of how it was started, which ends with its token.
    std::string tokenOf(const std::string& program) const {
        const std::string report = home_.path("report." + program);
        if (!comesTrue([&] { return fs::exists(report); })) return "(none)";
        std::ifstream in(report);
        std::string line, last;
        while (std::getline(in, line)) last = line;
        fs::remove(report);
        return last;
    }
    static void end(const ProcessSerialNumber& psn) {
        kill(static_cast<pid_t>(psn.lowLongOfPSN), SIGKILL);
        EXPECT_TRUE(comesTrue([&] { return !IsApplicationRunning(psn); }));
    }

    TemporaryFolder home_;
};

TEST_F(Applications, AreFoundLaunchedMetAndGone) {
    const struct {
        CFStringRef bundleID;
        UInt32 signature;
        std::string path, program;
    } rows[] = {
        {CFSTR("org.example.osa.pen"), 'OsAp', home_.path("Applications/Pen.app"), "pen"},
        {CFSTR("org.example.osa.quill"), 'OsAq',
         home_.path(".local/share/applications/org.example.osa.quill.desktop"), "quill"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        ProcessSerialNumber psn{};
        const CFileSpec application = FindApplication(row.bundleID);
        EXPECT_EQ(application.GetPath(), row.path);
        EXPECT_EQ(FindApplication(row.signature).GetPath(), row.path);
        EXPECT_FALSE(IsApplicationRunning(row.signature) || IsApplicationRunning(application) ||
                     GetApplicationPSN(row.bundleID, psn));
        ActivateAnApplication(row.signature);  // runs nowhere: nothing happens

        LaunchAnApplication(row.bundleID, false, false);
        EXPECT_EQ(tokenOf(row.program), "token (none)");
        ASSERT_TRUE(GetApplicationPSN(row.signature, psn));
        EXPECT_EQ(SignatureOfPSN(psn), row.signature);
        EXPECT_EQ(FileOfPSN(psn).GetPath(), row.path);
        EXPECT_FALSE(IsFBA(psn));
        ProcessSerialNumber again{};
        EXPECT_TRUE(GetApplicationPSN(row.bundleID, again) &&
                    again.lowLongOfPSN == psn.lowLongOfPSN);
        EXPECT_TRUE(GetApplicationPSN(application, again) && IsApplicationRunning(application));
        for (const auto& activate : std::initializer_list<std::function<void()>>{
                 [&] { ActivateAnApplication(psn); }, [&] { ActivateAnApplication(row.bundleID); },
                 [&] { ActivateAnApplication(application); }}) {
            EXPECT_EQ(thrown(activate), kCannotSetFrontProcessErr) << "no desktop here";
        }
        end(psn);
        EXPECT_FALSE(IsApplicationRunning(row.signature) || IsFBA(psn));
        EXPECT_EQ(SignatureOfPSN(psn), 'null');
        EXPECT_EQ(thrown([&] { FileOfPSN(psn); }), procNotFound);

        FSSpec spec;
        FailOSErr(FSGetCatalogInfo(&application.GetFSRef(), kFSCatInfoNone, nullptr, nullptr, &spec,
                                   nullptr));
        LaunchAnApplication(&spec, true, false);
        EXPECT_EQ(tokenOf(row.program), "token ours");
        ASSERT_TRUE(GetApplicationPSN(row.signature, psn));
        end(psn);
    }
    const FSRef before = FindApplication(CFSTR("org.example.osa.pen")).GetFSRef();
    FSRef ref = before;
    EXPECT_EQ(FindApplicationNoThrow(CFSTR("org.example.None"), ref), kLSApplicationNotFoundErr);
    EXPECT_EQ(FindApplicationNoThrow('none', ref), kLSApplicationNotFoundErr);
    EXPECT_EQ(FSCompareFSRefs(&ref, &before), noErr);
    EXPECT_EQ(thrown([] { LaunchAnApplication(CFSTR("none"), true, true); }),
              kLSApplicationNotFoundErr);
}

TEST_F(Applications, TheRunningOneIsThisBundle) {
    EXPECT_EQ(GetApplicationName(), utf16("application_test"));
    EXPECT_EQ(GetApplicationBundleID(), utf16("org.example.osa.application"));
    EXPECT_EQ(fs::path(GetApplicationFileSpec().GetPath()).filename(), "Example.app");
    const ProcessSerialNumber own = GetCurrentApplication();
    EXPECT_EQ(SignatureOfPSN(own), 'OsAt');
    ProcessSerialNumber found{};
    EXPECT_TRUE(GetApplicationPSN(CFSTR("org.example.osa.application"), found));
    EXPECT_EQ(found.lowLongOfPSN, own.lowLongOfPSN);
    EXPECT_EQ(FindApplication('OsAt').GetPath(), GetApplicationFileSpec().GetPath());
    EXPECT_EQ(ActivateThisApplication(true), kCannotSetFrontProcessErr);
    EXPECT_EQ(thrown([] { GetActiveApplication(); }), procNotFound);
}

TEST_F(Applications, KeysRequiredParametersAndHelp) {
    const auto keys = [] {
        return std::array{IsCommandDown(), IsShiftDown(), IsOptionDown(), IsControlDown()};
    };
    EXPECT_EQ(keys(), (std::array{false, false, false, false}));
    OSASetCurrentEventKeyModifiers(0x100 | 0x800);
    EXPECT_EQ(keys(), (std::array{true, false, true, false}));
    OSASetCurrentEventKeyModifiers(0x200 | 0x1000);
    EXPECT_EQ(keys(), (std::array{false, true, false, true}));
    OSASetCurrentEventKeyModifiers(0);

    const ProcessSerialNumber own = GetCurrentApplication();
    const CAEDesc target(&own);
    AppleEvent event;
    FailOSErr(AECreateAppleEvent('aevt', 'odoc', &target.GetDesc(), -1, 0, &event));
    const auto check = [&] { CheckForRequiredParams(CAEDescReader(event)); };
    EXPECT_EQ(thrown(check), noErr);
    FailOSErr(AEPutParamPtr(&event, '----', typeChar, "x", 1));
    EXPECT_EQ(thrown(check), errAEParamMissed);
    AEDesc read;
    FailOSErr(AEGetParamDesc(&event, '----', typeWildCard, &read));
    EXPECT_EQ(thrown(check), noErr);
    EXPECT_EQ(thrown([&] { CheckForRequiredParams(CAEDescReader(read)); }), errAENotAppleEvent);
    AEDisposeDesc(&read);
    AEDisposeDesc(&event);

    // The desktop's opener writes what it is asked for.
    const std::string path = std::getenv("PATH");
    home_.write("bin/xdg-open", "#!/bin/sh\necho \"$1\" > '" + home_.path("shown") + "'\n");
    fs::permissions(home_.path("bin/xdg-open"), fs::perms::owner_all);
    setenv("PATH", (home_.path("bin") + ":" + path).c_str(), 1);
    const auto shown = [&] {
        std::string url;
        comesTrue([&] { return std::getline(std::ifstream(home_.path("shown")), url).good(); });
        fs::remove(home_.path("shown"));
        return url.substr(std::min(url.size(), url.rfind("Resources/") + 10));
    };
    GotoHelpPage(utf16("pages/b c.html"), utf16("part"));
    EXPECT_EQ(shown(), "Example%20Help/pages/b%20c.html#part");
    GotoHelpPage(gEmptyString);
    EXPECT_EQ(shown(), "Example%20Help/index.html");
    GotoHelpAnchor(utf16("part"));
    EXPECT_EQ(shown(), "Example%20Help/pages/b%20c.html#part");
    EXPECT_EQ(thrown([] { SearchHelpBook(utf16("unheard-of")); }), kAHInternalErr);
    EXPECT_EQ(thrown([] { GotoHelpPage(utf16("../Info.plist")); }), kAHInternalErr);
    setenv("PATH", path.c_str(), 1);
}

}  // namespace
}  // namespace osa::test
