// Walking folders, and searching the locations of an application, which this program is one of: it
// runs out of a bundle.
#include "Libraries/MacToolboxLib/TBUtilities/SupportFolders.h"

#include <CoreServices/Aliases.h>
#include <CoreServices/Folders.h>
#include <CoreServices/Resources.h>
#include <OSA/HostFolders.h>
#include <dlfcn.h>

#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"
#include "Libraries/MacToolboxLib/TBUtilities/FileVisitor.h"
#include "tests/support/Library.h"
#include "tests/support/TemporaryFolder.h"

namespace {

OSErr gCloseStatus = noErr;
int gOpenIterators = 0;
std::vector<UniCharCount> gLengths;

template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// The library's calls come here before they go to the platform.

extern "C" OSErr FSOpenIterator(const FSRef* folder, FSIteratorFlags flags, FSIterator* iterator) {
    const OSErr status = real<decltype(FSOpenIterator)>("FSOpenIterator")(folder, flags, iterator);
    if (status == noErr) ++gOpenIterators;
    return status;
}

extern "C" OSErr FSCloseIterator(FSIterator iterator) {
    --gOpenIterators;
    const OSErr status = real<decltype(FSCloseIterator)>("FSCloseIterator")(iterator);
    return gCloseStatus != noErr ? gCloseStatus : status;
}

extern "C" OSErr FSMakeFSRefUnicode(const FSRef* parent, UniCharCount nameLength,
                                    const UniChar* name, TextEncodingHint hint, FSRef* ref) {
    gLengths.push_back(nameLength);
    return real<decltype(FSMakeFSRefUnicode)>("FSMakeFSRefUnicode")(parent, nameLength, name, hint,
                                                                    ref);
}

namespace osa::test {
namespace {

using Names = std::set<std::string>;

class Recorder : public FileVisitor {
  public:
    bool ProcessFile(const CFileSpec& file, bool isFolder) override {
        const std::string path = file.GetPath();
        seen.insert(path.substr(path.rfind('/') + 1) + (isFolder ? "/" : ""));
        if (failure != noErr) FailOSErr(failure);
        return static_cast<int>(seen.size()) != stopsAfter;
    }
    Names seen;
    int stopsAfter = -1;
    OSStatus failure = noErr;
};

TEST(FileVisitor, seesWhatEntriesLeadTo) {
    TemporaryFolder temporary;
    const std::string longest(255, 'n');
    fs::create_directories(temporary.path("folder/target"));
    temporary.write("folder/file", "");
    temporary.write("folder/._file", std::string("\0\5\x16\7\0\2\0\0", 8) + std::string(18, '\0'));
    temporary.write("folder/" + longest, "");
    temporary.write("folder/\xFF\xFE", "");
    fs::create_symlink("target", temporary.path("folder/link"));
    fs::create_symlink("link", temporary.path("folder/link to link"));
    fs::create_symlink("nowhere", temporary.path("folder/broken"));
    fs::create_symlink("circle 2", temporary.path("folder/circle 1"));
    fs::create_symlink("circle 1", temporary.path("folder/circle 2"));
    const CFileSpec folder = specOf(temporary.path("folder"));
    Recorder all;
    all.ScanFolder(folder);
    EXPECT_EQ(all.seen, (Names{"target/", "file", longest, "\xFF\xFE"}));

    Recorder stopping;
    stopping.stopsAfter = 1;
    stopping.ScanFolder(folder);
    EXPECT_EQ(stopping.seen.size(), 1u);

    Recorder throwing;
    throwing.failure = dskFulErr;
    EXPECT_EQ(thrown([&] { throwing.ScanFolder(folder); }), dskFulErr);
    gCloseStatus = ioErr;
    EXPECT_EQ(thrown([&] { throwing.ScanFolder(folder); }), ioErr) << "closing comes first";
    EXPECT_EQ(thrown([&] { all.ScanFolder(folder); }), ioErr);
    gCloseStatus = noErr;
    EXPECT_EQ(gOpenIterators, 0);
    EXPECT_EQ(thrown([&] { all.ScanFolder(specOf(temporary.path("folder/file"))); }),
              errFSNotAFolder);
}

/// Makes a file the alias file of another object, as the Finder does.
void makeAliasFile(const std::string& path, const std::string& target) {
    std::ofstream(path).close();
    const FSRef file = refOf(path);
    const FSRef targetRef = refOf(target);
    AliasHandle alias = nullptr;
    FailOSErr(FSNewAlias(nullptr, &targetRef, &alias));
    const FSRef folder = specOf(fs::path(path).parent_path()).GetFSRef();
    const TCLString name = utf16(fs::path(path).filename());
    FSCreateResFile(&folder, name.size(), name.data(), 0, nullptr, nullptr, nullptr);
    const ResFileRefNum resources = FSOpenResFile(&file, fsRdWrPerm);
    AddResource(reinterpret_cast<Handle>(alias), 'alis', 0, nullptr);
    CloseResFile(resources);
    CFileSpec spec = specOf(path);
    FinderInfo info = spec.GetFinderInfo();
    info.fdFlags |= kIsAlias;
    spec.SetFinderInfo(info);
}

Names collected(const CFileSpec& folder, const char* extension, bool wantFolders) {
    std::map<TCLString, CFileSpec> files;
    ExtensionVisitor visitor(utf16(extension), wantFolders, &files);
    visitor.ScanFolder(folder);
    Names names;
    for (const auto& [name, file] : files) names.insert(fs::path(file.GetPath()).filename());
    return names;
}

TEST(ExtensionVisitor, matchesTheEndOfTheTargetsName) {
    TemporaryFolder temporary;
    for (const char* const name : {"Mixed.pLuG", ".plug", "a.plug.plug", "b.plug-in", "\xFF.plug"})
        fs::create_directories(temporary.path(name));
    temporary.write("file.plug", "");
    fs::create_symlink("Mixed.pLuG", temporary.path("other name"));
    fs::create_symlink("b.plug-in", temporary.path("misleading.plug"));
    const TemporaryFolder elsewhere;
    for (const char* const name : {"Away.plug", "Lost.plug"}) {
        fs::create_directories(elsewhere.path(name));
        makeAliasFile(temporary.path(std::string("alias of ") + name), elsewhere.path(name));
    }
    fs::remove(elsewhere.path("Lost.plug"));
    const CFileSpec folder = specOf(temporary.path());
    EXPECT_EQ(collected(folder, ".PLUG", true), (Names{"Away.plug", "Mixed.pLuG", "a.plug.plug"}));
    EXPECT_EQ(collected(folder, ".plug", false), (Names{"file.plug"}));
    EXPECT_EQ(collected(folder, "g", true),
              (Names{"Away.plug", "Mixed.pLuG", ".plug", "a.plug.plug"}));
}

/// The user's folders in a temporary one; the application's bundle emptied of what the test puts
/// in.
class ApplicationLocations : public testing::Test {
  protected:
    ApplicationLocations() { OSASetHostFolderRoot(home_.path().c_str()); }
    ~ApplicationLocations() override {
        OSASetHostFolderRoot(nullptr);
        for (const std::string& folder : locations()) {
            for (const char* const name : {"Sets", "One.plug", "Two.plug", "Three.plug", "file"})
                fs::remove_all(folder + "/" + name);
        }
    }

    std::string bundle() const { return GetApplicationFileSpec().GetPath(); }
    /// In the order of the search.
    std::vector<std::string> locations() const {
        return {home_.path(".local/share/application_test"),
                fs::path(bundle()).parent_path().string(), bundle() + "/Contents",
                bundle() + "/Contents/Resources"};
    }

    TemporaryFolder home_;
};

std::vector<std::string> paths(const std::vector<CFileSpec>& files) {
    std::vector<std::string> all;
    for (const CFileSpec& file : files) all.push_back(file.GetPath());
    return all;
}

TEST_F(ApplicationLocations, earlierOnesOverrideLaterOnes) {
    const auto at = locations();
    const TCLString name = utf16("file");
    EXPECT_EQ(thrown([&] { FindInSupportFolder(name); }), fnfErr);
    for (auto location = at.rbegin(); location != at.rend(); ++location) {
        fs::create_directories(*location + "/file");
        EXPECT_EQ(FindInSupportFolder(name).GetPath(), *location + "/file");
    }
    const auto make = [&](int location, const char* folder) {
        fs::create_directories(at[location] + "/" + folder);
        fs::create_directories(at[location] + "/Sets/" + folder);
        return at[location] + "/" + folder;
    };
    const std::string two = make(3, "Two.plug"), one = make(2, "One.plug");
    make(3, "One.plug");
    EXPECT_EQ(paths(FindInSupportFolderOfType(utf16(".plug"))), (std::vector{one, two}));
    const std::string own = make(0, "Two.plug"), beside = make(1, "Three.plug");
    make(2, "Three.plug");
    EXPECT_EQ(paths(FindInSupportFolderOfType(utf16(".plug"))), (std::vector{one, beside, own}));
    EXPECT_EQ(paths(FindInSupportFolderOfType(utf16(".plug"), utf16("Sets"))),
              (std::vector{at[2] + "/Sets/One.plug", at[1] + "/Sets/Three.plug",
                           at[0] + "/Sets/Two.plug"}));
    EXPECT_TRUE(FindInSupportFolderOfType(utf16(".plug"), utf16("None")).empty());

    const std::string contents = bundle() + "/Contents";
    fs::rename(contents, contents + " (away)");
    EXPECT_EQ(thrown([&] { FindInSupportFolderOfType(utf16(".plug")); }), errFSNotAFolder);
    fs::rename(contents + " (away)", contents);
}

TEST_F(ApplicationLocations, madeFoldersAreFoundAgain) {
    const std::string own = home_.path(".local/share/application_test");
    const TCLString longName(130, 'n');
    for (const TCLString& name : {utf16("Sets"), longName}) {
        const std::string made = MakeInSupportFolder(name).GetPath();
        EXPECT_EQ(MakeInSupportFolder(name).GetPath(), made);
        EXPECT_EQ(FindInSupportFolder(name).GetPath(), made);
        EXPECT_EQ(fs::path(made).parent_path(), own);
    }
    gLengths.clear();
    FindInSupportFolder(utf16("Sets"));
    EXPECT_EQ(gLengths, (std::vector<UniCharCount>{2 * GetApplicationName().size(), 8}));
    EXPECT_EQ(GetCacheFolder().GetPath(), home_.path(".cache/application_test"));
    EXPECT_EQ(GetCacheFolder().GetPath(), home_.path(".cache/application_test"));
    EXPECT_EQ(GetDesktopFolder().GetPath(), home_.path(".config"));
    EXPECT_EQ(GetHomeFolder().GetPath(), home_.path());
    EXPECT_EQ(GetTempFolder().GetPath(), home_.path("tmp"));
}

}  // namespace
}  // namespace osa::test
