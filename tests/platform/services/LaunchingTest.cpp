// Launching programs of our own and meeting them among the processes.
#include <CoreServices/Folders.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/Processes.h>
#include <OSA/HostFolders.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <regex>

#include "platform/base/FourCC.h"
#include "platform/cf/StringObject.h"
#include "platform/posix/processes/ProgramStart.h"
#include "platform/services/processes/ProcessNumbers.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

const char kReport[] =
    "\nin HOME\nstreams /dev/null /dev/null /dev/null \nleads 1\nignores 00\nentry ";

/// All zeros when it is not there.
ProcessInfoRec informationOf(const ProcessSerialNumber& number) {
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    return GetProcessInformation(&number, &info) == noErr ? info : ProcessInfoRec{};
}

bool isThere(const ProcessSerialNumber& number) {
    return informationOf(number).processInfoLength != 0;
}

/// What a test has started ends with it.
class Launching : public testing::Test {
  protected:
    Launching() {
        OSASetHostFolderRoot(home_.path().c_str());
        setenv("OSA_LAUNCH_REPORT", home_.path("report").c_str(), 1);
        setenv("XDG_ACTIVATION_TOKEN", "ours", 1);
        setenv("GIO_LAUNCHED_DESKTOP_FILE_PID", std::to_string(getpid()).c_str(), 1);
    }
    ~Launching() override {
        for (const ProcessSerialNumber& each : processesIn(home_.path())) end(each);
        unsetenv("GIO_LAUNCHED_DESKTOP_FILE_PID");
        OSASetHostFolderRoot(nullptr);
    }

    void makeBundle(const std::string& name, const std::string& program) const {
        home_.write(name + ".app/Contents/PkgInfo", "APPLprob");
        home_.write(name + ".app/Contents/Info.plist",
                    "{ CFBundleIdentifier = \"org.example." + name + "\"; CFBundleExecutable = \"" +
                        program + "\"; LSBackgroundOnly = \"1\"; }");
        const fs::path folder = home_.path(name + ".app/Contents/Linux");
        fs::create_directories(folder);
        fs::copy_file(std::getenv("OSA_LAUNCHED_PROGRAM"), folder / program);
    }
    OSStatus open(const std::string& name, LSLaunchFlags flags,
                  const std::vector<FSRef>& documents = {}) const {
        return open(refOf(home_.path(name)), flags, documents);
    }
    static OSStatus open(const FSRef& application, LSLaunchFlags flags,
                         const std::vector<FSRef>& documents = {}) {
        const auto count = static_cast<UInt32>(documents.size());
        const LSLaunchFSRefSpec spec{&application, count, documents.data(), {}, flags, {}};
        FSRef launched{};
        const OSStatus status = LSOpenFromRefSpec(&spec, &launched);
        EXPECT_EQ(FSCompareFSRefs(&launched, &application) == noErr, status == noErr);
        return status;
    }
    /// The report of the program of that name, which is waited for and taken away.
    std::string reportOf(const std::string& program) const {
        const std::string file = home_.path("report." + program);
        if (!comesTrue([&] { return fs::exists(file); })) return "(none)";
        const std::string report = contentOf(file);
        fs::remove(file);
        return std::regex_replace(report, std::regex(home_.path()), "HOME");
    }
    static std::vector<ProcessSerialNumber> processesIn(const std::string& place) {
        std::vector<ProcessSerialNumber> found;
        ProcessSerialNumber each{0, kNoProcess};
        while (GetNextProcess(&each) == noErr) {
            FSRef ref{};
            GetProcessBundleLocation(&each, &ref);
            if (pathOf(ref).starts_with(place)) found.push_back(each);
        }
        return found;
    }
    static void end(const ProcessSerialNumber& number) {
        kill(static_cast<pid_t>(number.lowLongOfPSN), SIGKILL);
        EXPECT_TRUE(comesTrue([&] { return !isThere(number); }));
    }

    TemporaryFolder home_;
};

TEST_F(Launching, ABundleRunsOnItsOwnAndIsFoundAmongTheProcesses) {
    makeBundle("Pen", "pen\n) R (");
    const FSRef document = refOf(home_.write("-a document", ""));
    const int leaking = ::open("/dev/zero", O_RDONLY);
    signal(SIGUSR1, SIG_IGN);
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, SIGUSR2);
    sigprocmask(SIG_BLOCK, &mask, nullptr);
    ASSERT_EQ(open("Pen.app", kLSLaunchDontSwitch, {document}), noErr);
    signal(SIGUSR1, SIG_DFL);
    sigprocmask(SIG_UNBLOCK, &mask, nullptr);
    ::close(leaking);
    EXPECT_EQ(reportOf("pen\n) R ("),
              std::string("HOME/-a document|") + kReport + "(none) 0\ntoken (none)\n");

    auto running = processesIn(home_.path());
    ASSERT_EQ(running.size(), 1U);
    const ProcessInfoRec info = informationOf(running[0]);
    EXPECT_TRUE(info.processSignature == FourCC("prob") && info.processType == FourCC("APPL") &&
                info.processMode == modeOnlyBackground);
    EXPECT_NEAR(info.processLaunchDate, TickCount(), 600);
    const auto known =
        CFRef<CFDictionaryRef>::Adopt(ProcessInformationCopyDictionary(&running[0], 0));
    const auto text = [&](CFStringRef key) {
        return utf8Of(static_cast<CFStringRef>(CFDictionaryGetValue(known.get(), key)));
    };
    EXPECT_EQ(text(CFSTR("CFBundleIdentifier")), "org.example.Pen");
    EXPECT_EQ(text(CFSTR("BundlePath")), home_.path("Pen.app"));
    EXPECT_TRUE(text(CFSTR("CFBundleExecutable")).ends_with("Pen.app/Contents/Linux/pen\n) R ("));

    EXPECT_EQ(open("Pen.app", kLSLaunchDefaults), noErr);
    EXPECT_EQ(processesIn(home_.path()).size(), 1U) << "it runs already";
    EXPECT_EQ(open("Pen.app", kLSLaunchNewInstance), noErr);
    EXPECT_EQ(reportOf("pen\n) R ("), std::string(kReport) + "(none) 0\ntoken ours\n");
    running = processesIn(home_.path());
    ASSERT_EQ(running.size(), 2U);

    // A walk goes on behind a process that has ended, with an old list and with a new one.
    end(running[0]);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
    for (const int pause : {0, 1100}) {
        std::this_thread::sleep_for(std::chrono::milliseconds(pause));
        ProcessSerialNumber each = running[0];
        while (!isSame(each, running[1])) ASSERT_EQ(GetNextProcess(&each), noErr);
    }
    const ProcessSerialNumber later{running[1].highLongOfPSN + 1, running[1].lowLongOfPSN};
    EXPECT_FALSE(isThere(later)) << "the same number, started at another time";
    fs::remove_all(home_.path("Pen.app"));
    FSRef gone;
    EXPECT_EQ(GetProcessBundleLocation(&running[1], &gone), fnfErr);
    end(running[1]);
}

TEST_F(Launching, ADesktopEntrysProcessIsTheEntrys) {
    fs::create_directories(home_.path("bin"));
    fs::copy_file(std::getenv("OSA_LAUNCHED_PROGRAM"), home_.path("bin/quill"));
    const std::string entry =
        home_.write("org.example.Quill.desktop",
                    "[Desktop Entry]\nType=Application\nName=Quill\nX-OSA-Signature=quil\nExec=" +
                        home_.path("bin/quill") + " --new %c\n");
    LaunchParamBlockRec block{};
    FSSpec spec;
    const FSRef ref = refOf(entry);
    ASSERT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr), noErr);
    block.launchAppSpec = &spec;
    EXPECT_EQ(LaunchApplication(&block), paramErr) << "not marked as an extended block";
    block.launchBlockID = extendedBlock;
    block.launchEPBLength = extendedBlockLen;
    ASSERT_EQ(LaunchApplication(&block), noErr);
    EXPECT_EQ(reportOf("quill"), std::string("--new|Quill|") + kReport +
                                     "HOME/org.example.Quill.desktop 1\ntoken ours\n");
    const ProcessSerialNumber first = block.launchProcessSN;
    EXPECT_EQ(informationOf(first).processSignature, FourCC("quil"));
    ASSERT_EQ(LaunchApplication(&block), noErr);
    EXPECT_EQ(block.launchProcessSN.lowLongOfPSN, first.lowLongOfPSN);

    // Without application the desktop's opener is started, which must not pass for ours.
    setenv("GIO_LAUNCHED_DESKTOP_FILE", entry.c_str(), 1);
    fs::copy_file(std::getenv("OSA_LAUNCHED_PROGRAM"), home_.path("bin/xdg-open"));
    const std::string path = getenv("PATH");
    setenv("PATH", home_.path("bin").c_str(), 1);
    for (const LSLaunchFlags flags : {LSLaunchFlags{}, LSLaunchFlags{kLSLaunchDontSwitch}}) {
        const LSLaunchFSRefSpec opening{nullptr, 1, &ref, nullptr, flags, nullptr};
        ASSERT_EQ(LSOpenFromRefSpec(&opening, nullptr), noErr);
        const std::string report = reportOf("xdg-open");
        EXPECT_TRUE(
            report.starts_with("HOME/org.example.Quill.desktop|\n") &&
            report.ends_with(flags == 0 ? "(none) 0\ntoken ours\n" : "(none) 0\ntoken (none)\n"))
            << report;
    }
    setenv("PATH", path.c_str(), 1);
    unsetenv("GIO_LAUNCHED_DESKTOP_FILE");
    fs::remove(entry);
    EXPECT_EQ(processesIn(home_.path("bin/quill")).size(), 1U) << "no entry: a bare program";
}

TEST_F(Launching, TellsWhyAnApplicationCannotBeStarted) {
    for (const char* const name : {"Script", "Locked", "Foreign", "Hollow"}) makeBundle(name, "it");
    home_.write("Script.app/Contents/Linux/it", "touch ran\n");
    home_.write("Foreign.app/Contents/Linux/it", "#!/nowhere/interpreter\n");
    fs::permissions(home_.path("Locked.app/Contents/Linux/it"), fs::perms::owner_read);
    fs::remove(home_.path("Hollow.app/Contents/Linux/it"));
    home_.write("text", "");
    makeBundle(".local/share/Trash/files/Old", "it");
    const std::tuple<const char*, OSStatus> rows[] = {
        {"Script.app", kLSExecutableIncorrectFormat},
        {"Foreign.app", kLSExecutableIncorrectFormat},
        {"Locked.app", kLSNoLaunchPermissionErr},
        {"Hollow.app", kLSNoExecutableErr},
        {"text", kLSNotAnApplicationErr},
        {".local", kLSNotAnApplicationErr},
        {".local/share/Trash/files/Old.app", kLSAppInTrashErr},
    };
    for (const auto& [name, status] : rows) EXPECT_EQ(open(name, 0), status) << name;
    const FSRef lost = refOf(home_.write("lost", ""));
    fs::remove(home_.path("lost"));
    EXPECT_EQ(open("Script.app", 0, {lost}), fnfErr);
    EXPECT_FALSE(fs::exists(home_.path("ran"))) << "a shell ran it";
    const posix::ProgramStart cut{"/bin/true", {std::string("a\0b", 3)}, "", {}, {}, ""};
    EXPECT_EQ(posix::startProgram(cut).status(), paramErr);
}

TEST_F(Launching, FailingSystemCallsLeaveNothingOpen) {
    makeBundle("Pen", "pen");
    fs::permissions(home_.path("Pen.app/Contents/Linux/pen"), fs::perms::owner_read);
    const NoLeaks leaks;
    const FSRef application = refOf(home_.path("Pen.app"));
    const ProcessSerialNumber own{0, kCurrentProcess};
    for (const LSLaunchFlags flags :
         {LSLaunchFlags{kLSLaunchNewInstance}, LSLaunchFlags{kLSLaunchDefaults}}) {
        for (UInt32 nth = 1, failed = 1; failed > 0; nth += 1 + nth / 64) {
            failed = failing(nth, false, [&, flags = flags] {
                FSRef ref;
                if (GetProcessBundleLocation(&own, &ref) == noErr) open(application, flags);
            });
        }
    }
}

}  // namespace
}  // namespace osa::test
