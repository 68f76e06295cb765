// Objects renamed, moved, exchanged and deleted, with all that is kept beside them.
#include <sys/stat.h>
#include <unistd.h>

#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

const std::string kInfo = finderInfo(FourCC("osas"), FourCC("ToyS"));
const std::string kFork = resourceFork("fork of x");
const std::string kPair = appleDouble(kInfo, kFork);

/// Where a store keeps the parts of `name` in `folder`: "@" stands for the folder, "*" for the
/// name.
struct Store {
    const char* label;
    std::vector<std::pair<std::string, std::string>> files;

    std::set<std::string> paths(const std::string& folder, const std::string& name) const {
        std::set<std::string> made;
        for (const auto& [pattern, text] : files) {
            std::string path = pattern;
            path.replace(path.find('@'), 1, folder);
            made.insert(path.replace(path.find('*'), 1, name));
        }
        return made;
    }
};
const Store kStores[] = {
    {"nothing beside it", {}},
    {"._x", {{"@/._*", kPair}}},
    {".AppleDouble", {{"@/.AppleDouble/*", kPair}}},
    {"__MACOSX", {{"__MACOSX/@/._*", kPair}}},
    {".rsrc", {{"@/.rsrc/*", kFork}, {"@/.finf/*", kInfo}}},
    {".resource", {{"@/.resource/*", kFork}, {"@/.finderinfo/*", kInfo}}},
    {"%x", {{"@/%*", kPair}}},
    {"two", {{"@/._*", appleDouble(kInfo, "")}, {"@/%*", appleDouble("", kFork)}}},
};

class CatalogChanges : public FileFixture {
  protected:
    static OSErr rename(const FSRef& object, const std::u16string& name, FSRef* renamed = nullptr) {
        return FSRenameUnicode(&object, name.size(), reinterpret_cast<const UniChar*>(name.data()),
                               0, renamed);
    }
    OSErr move(const FSRef& object, const std::string& folder, FSRef* moved = nullptr) const {
        const FSRef to = ref(folder);
        return FSMoveObject(&object, &to, moved);
    }
    static OSErr move(const FSRef& object, const FSRef& to, FSRef* moved = nullptr) {
        return FSMoveObject(&object, &to, moved);
    }
    /// Files below the folder, without the folders that hold them.
    std::set<std::string> files() const {
        auto found = names();
        std::erase_if(found, [&](const std::string& name) {
            return fs::is_directory(fs::symlink_status(at(name)));
        });
        return found;
    }
    void clear() const {
        for (const auto& entry : fs::directory_iterator(root_)) {
            fs::remove_all(entry);
        }
    }
    FSRef fill(const Store& store) const {
        clear();
        fs::create_directories(at("e"));
        put("d/x", "data of x");
        put("d/z", "data of z");
        put("d/._z", appleDouble("", "fork of z"));
        for (const auto& [pattern, text] : store.files) {
            put(*Store{"", {{pattern, ""}}}.paths("d", "x").begin(), text);
        }
        return ref("d/x");
    }
    /// Checks that the object's parts are there; null parts for a store without any.
    void expectWhole(const std::string& name, const Store& store) const {
        EXPECT_EQ(content(name), "data of x");
        const bool isBare = store.files.empty();
        EXPECT_EQ(fork(ref(name), ForkKind::resource), isBare ? "status -1409" : kFork);
        EXPECT_EQ(+info(ref(name), kFSCatInfoFinderInfo).finderInfo.fdType,
                  isBare ? 0 : FourCC("osas"));
    }
    /// "d/x" and "d/z", of which the second had a fork beside it.
    void expectExchanged(const Store& store) const {
        const bool isBare = store.files.empty();
        EXPECT_EQ(content("d/x") + content("d/z"), "data of zdata of x");
        EXPECT_EQ(fork(ref("d/z"), ForkKind::resource), isBare ? "status -1409" : kFork);
        EXPECT_EQ(fork(ref("d/x"), ForkKind::resource), "fork of z");
        for (const char* name : {"d/x", "d/z"}) {
            const FSCatalogInfo now = info(ref(name), kFSCatInfoFinderInfo | kFSCatInfoPermissions);
            const bool isX = std::string(name) == "d/x";
            EXPECT_EQ(+now.finderInfo.fdType, isX && !isBare ? FourCC("osas") : 0);
            EXPECT_EQ(now.permissions.mode & 0777, isX ? 0640 : 0604);
        }
        for (const std::string& name : names()) EXPECT_EQ(name.find("._."), std::string::npos);
    }
};

std::set<std::string> operator+(std::set<std::string> one, const std::set<std::string>& other) {
    one.insert(other.begin(), other.end());
    return one;
}

TEST_F(CatalogChanges, TakeSideFilesAlongOrChangeNothing) {
    for (const Store& store : kStores) {
        for (const std::string what : {"rename", "move", "delete", "exchange"}) {
            SCOPED_TRACE(store.label + (": " + what));
            const std::string folder = what == "move" ? "e" : "d";
            const std::string name = what == "rename" ? "y" : what == "move" ? "x" : "z";
            const std::string place = folder + "/" + name;
            FSRef x{}, z{}, e{}, changed{};
            std::set<std::string> there;
            std::set<std::string> after{"d/z", "d/._z"};
            if (what == "exchange") after.insert("d/x");
            if (what != "delete") {
                after = after + store.paths(folder, name) + std::set{place};
            }
            failEachCall(
                [&] {
                    x = fill(store);
                    z = ref("d/z");
                    e = ref("e");
                    chmod(at("d/x").c_str(), 0640);
                    chmod(at("d/z").c_str(), 0604);
                    there = names();
                },
                [&]() -> OSStatus {
                    if (what == "rename") return rename(x, u"y", &changed);
                    if (what == "move") return move(x, e, &changed);
                    return what == "delete" ? FSDeleteObject(&x) : FSExchangeObjects(&x, &z);
                },
                [&](OSStatus status) {
                    if (status != noErr) {
                        EXPECT_EQ(names(), there);
                        EXPECT_EQ(info(x, kFSCatInfoPermissions).permissions.mode & 0777, 0640);
                        EXPECT_EQ(info(z, kFSCatInfoPermissions).permissions.mode & 0777, 0604);
                        return expectWhole("d/x", store);
                    }
                    EXPECT_TRUE(what == "exchange" || files() == after);
                    EXPECT_EQ(FSGetCatalogInfo(&x, 0, nullptr, nullptr, nullptr, nullptr), fnfErr);
                    if (what == "delete") return;
                    if (what == "exchange") return expectExchanged(store);
                    expectWhole(place, store);
                    const FSRef now = ref(place);
                    EXPECT_EQ(FSCompareFSRefs(&changed, &now), noErr);
                });
        }
    }
}

TEST_F(CatalogChanges, KeepWhatIsInFolders) {
    FSRef sub{}, e{};
    std::set<std::string> there;
    const auto prepare = [&](bool isEmpty) {
        clear();
        for (const char* name : {"d/sub/.rsrc", "d/sub/.finderinfo", "e"}) {
            fs::create_directories(at(name));
        }
        put("d/._sub", appleDouble(kInfo, ""));
        put("d/sub/.AppleDouble/.Parent", kPair);
        put("d/sub/._gone", kPair);
        put("__MACOSX/d/sub/._c", kPair);
        if (!isEmpty) put("d/sub/c", "data of x");
        sub = ref("d/sub");
        e = ref("e");
        there = names();
    };
    const auto check = [&](const std::string& place, OSStatus status) {
        EXPECT_EQ(names() == there, status != noErr);
        expectWhole(status == noErr ? place + "/c" : "d/sub/c", kStores[1]);
    };
    failEachCall([&] { prepare(false); }, [&] { return rename(sub, u"new"); },
                 [&](OSStatus status) { check("d/new", status); });
    failEachCall([&] { prepare(false); }, [&] { return move(sub, e); },
                 [&](OSStatus status) { check("e/sub", status); });
    failEachCall([&] { prepare(true); }, [&] { return FSDeleteObject(&sub); },
                 [&](OSStatus status) {
                     const std::set<std::string> gone{"__MACOSX", "__MACOSX/d", "d", "e"};
                     EXPECT_EQ(names(), status == noErr ? gone : there);
                 });
    // What looks like a side file but holds something else is not thrown away.
    for (const char* name : {"c", "._folder/c", ".rsrc/folder/c", "__MACOSX/c", ".git/c", "._c",
                             ".finf/c", ".AppleDouble/c", "__MACOSX/._c"}) {
        SCOPED_TRACE(name);
        prepare(true);
        put(std::string("d/sub/") + name, "my text");
        there = names();
        EXPECT_EQ(FSDeleteObject(&sub), fBsyErr);
        EXPECT_EQ(names(), there);
    }
    // Out of what was unpacked, and in again.
    clear();
    put("a/__MACOSX/d/._x", kPair);
    put("a/d/x", "data of x");
    put("a/d/sub/y");
    fs::create_directories(at("e"));
    FSRef x = ref("a/d/x");
    EXPECT_EQ(move(x, "e", &x), noErr);
    expectWhole("e/x", kStores[1]);
    EXPECT_EQ(content("a/__MACOSX/d/._x"), "none");
    EXPECT_EQ(move(x, "a/d/sub", &x), noErr);
    expectWhole("a/d/sub/x", kStores[1]);
    EXPECT_EQ(FSDeleteObject(&x), noErr);
    EXPECT_EQ(files(), std::set<std::string>{"a/d/sub/y"});
}

TEST_F(CatalogChanges, LeaveAloneWhatIsNotTheirs) {
    put("x", "data of x");
    put("._x", "not ours");
    put("%x", "not ours either");
    put(".resource/x", "nor this");
    fs::create_directories(at(".finderinfo"));
    fs::create_symlink("../beyond/side", at(".finderinfo/x"));
    put("beyond/fork/x", "fork");
    put("beyond/side", kPair);
    fs::create_symlink("beyond/fork", at(".rsrc"));
    fs::create_symlink("beyond", at("link"));
    fs::create_symlink("nowhere", at("._link"));
    FSRef x{};
    EXPECT_EQ(rename(ref("x"), u"y", &x), noErr);
    const std::set<std::string> others{"._x",   "%x",          ".resource/x",   ".finderinfo/x",
                                       ".rsrc", "beyond/side", "beyond/fork/x", "._link"};
    EXPECT_EQ(files(), others + std::set<std::string>({"y", "link"}));
    // Links are moved and deleted themselves.
    fs::create_symlink("beyond/side", at("._y"));
    EXPECT_EQ(rename(x, u"z", &x), noErr);
    EXPECT_EQ(fs::read_symlink(at("._z")), "beyond/side");
    EXPECT_EQ(move(x, "beyond"), paramErr) << "the link would lead nowhere";
    EXPECT_EQ(FSDeleteObject(&x), noErr);
    FSRef link = unfollowed("link");
    EXPECT_EQ(rename(link, u"way", &link), noErr);
    EXPECT_EQ(FSDeleteObject(&link), noErr);
    EXPECT_EQ(files(), others);
}

TEST_F(CatalogChanges, KnowTheirOwn) {
    FSRef x{};
    put("x", "data of x");
    put("._x", kPair);
    fs::create_hard_link(at("._x"), at("._y"));
    EXPECT_EQ(rename(ref("x"), u"y", &x), noErr) << "left by a crash";
    expectWhole("y", kStores[1]);
    EXPECT_EQ(files(), (std::set<std::string>{"y", "._y"}));
    fs::rename(at("._y"), at("%y"));
    put("._z", "text");
    EXPECT_EQ(rename(x, u"z", &x), noErr) << "the stranger is not in the way";
    expectWhole("z", kStores[1]);
    EXPECT_EQ(files(), (std::set<std::string>{"z", "%z", "._z"}));
    for (const bool isBlank : {true, false}) {
        clear();
        put("a/b/x", "data of x");
        put("a/b/__MACOSX/._x", isBlank ? appleDouble("", "") : kPair);
        put("a/__MACOSX/b/._x", kPair);
        EXPECT_EQ(move(ref("a/b/x"), "", &x), isBlank ? noErr : paramErr);
        expectWhole(isBlank ? "x" : "a/b/x", kStores[1]);
    }
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become somebody else";
    clear();
    put("x");
    chmod(root_.c_str(), 0777);
    for (const auto& [name, mode] : {std::pair{"._x", 0}, std::pair{"d", 0333}}) {
        ASSERT_EQ(mkdir(at(name).c_str(), 0) | chown(at(name).c_str(), 65534, 65534), 0);
        ASSERT_EQ(chmod(at(name).c_str(), static_cast<mode_t>(mode)), 0);
    }
    ASSERT_EQ(seteuid(65534), 0);
    const FSRef d = ref("d");
    x = ref("x");
    EXPECT_EQ(FSDeleteObject(&x) + FSDeleteObject(&d), noErr);
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(names(), std::set<std::string>{"._x"});
}

TEST_F(CatalogChanges, SayWhyTheyDoNot) {
    put("d/x", "data");
    put("d/._x", kPair);
    put("d/y");
    put("d/%lost", kPair);
    put("d/sub/x");
    fs::create_symlink("nowhere", at("d/._link"));
    const FSRef x = ref("d/x"), y = ref("d/y"), d = ref("d"), none{};
    const auto there = names();
    EXPECT_EQ(rename(x, u"y"), dupFNErr);
    EXPECT_EQ(rename(y, u"lost"), dupFNErr) << "another's fork would become its own";
    EXPECT_EQ(rename(x, u"link"), dupFNErr) << "the side file has no place";
    EXPECT_EQ(rename(x, u".."), bdNamErr);
    EXPECT_EQ(rename(x, u""), errFSMissingName);
    EXPECT_EQ(rename(x, std::u16string(254, u'n')), errFSNameTooLong) << "the side file's name";
    EXPECT_EQ(rename(none, u"z"), errFSBadFSRef);
    EXPECT_EQ(rename(x, u"x"), noErr);
    EXPECT_EQ(move(x, "d"), noErr);
    EXPECT_EQ(move(x, "d/sub"), dupFNErr);
    EXPECT_EQ(move(x, "d/y"), errFSNotAFolder);
    EXPECT_EQ(move(d, "d/sub"), paramErr);
    EXPECT_EQ(move(d, "d"), paramErr);
    EXPECT_EQ(FSDeleteObject(&d), fBsyErr);
    EXPECT_EQ(FSDeleteObject(nullptr), paramErr);
    EXPECT_EQ(FSExchangeObjects(&x, &d), notAFileErr);
    EXPECT_EQ(FSExchangeObjects(&x, &x), noErr);
    EXPECT_EQ(move(x, refOf("/dev")), diffVolErr);
    // The superuser is refused nothing.
    const bool isSuper = geteuid() == 0;
    chmod(root_.c_str(), 0755);
    chmod(at("d").c_str(), 0555);
    ASSERT_EQ(isSuper ? seteuid(65534) : 0, 0);
    EXPECT_EQ(rename(x, u"z"), afpAccessDenied);
    EXPECT_EQ(FSDeleteObject(&x), afpAccessDenied);
    ASSERT_EQ(isSuper ? seteuid(0) : 0, 0);
    chmod(at("d").c_str(), 0755);
    EXPECT_EQ(names(), there);
}

TEST_F(CatalogChanges, AreFollowedByOpenForks) {
    put("d/x", "data");
    put("z", "other");
    SInt16 number = 0;
    ASSERT_EQ(open(ref("d/x"), u"RESOURCE_FORK", fsRdWrPerm, number), noErr);
    EXPECT_EQ(rename(ref("d/x"), u"y"), noErr);
    EXPECT_EQ(rename(ref("d"), u"e"), noErr);
    EXPECT_EQ(move(ref("e/y"), ""), noErr);
    const FSRef y = ref("y"), z = ref("z");
    EXPECT_EQ(FSExchangeObjects(&y, &z), noErr);
    SInt32 count = 4;
    EXPECT_EQ(FSWrite(number, &count, "fork"), noErr);
    EXPECT_EQ(FSClose(number), noErr);
    EXPECT_EQ(content("z") + fork(ref("z"), ForkKind::resource), "datafork");
    EXPECT_EQ(files(), (std::set<std::string>{"y", "z", "._z"}));
}

TEST_F(CatalogChanges, MakeFoldersAndSetDates) {
    constexpr FSCatalogInfoBitmap kDates = kFSCatInfoContentMod | kFSCatInfoAccessDate;
    constexpr FSCatalogInfoBitmap kAll = kDates | kFSCatInfoFinderXInfo | kFSCatInfoPermissions;
    FSCatalogInfo first{}, second{};
    first.contentModDate = {1, 2, 3};
    first.accessDate = {0, 4000000000, 65535};
    first.extFinderInfo.fdScript = 1;
    first.permissions.mode = 0750;
    second.contentModDate = second.accessDate = {1, 0, 0};
    second.permissions.mode = 0700;
    const FSRef parent = ref("");
    FSRef d{};
    UInt32 id = 0;
    const UniChar name[] = {'d'};
    const auto make = [&](FSCatalogInfoBitmap which, FSSpec* spec) {
        return FSCreateDirectoryUnicode(&parent, 1, name, which, &first, &d, spec, &id);
    };
    failEachCall([&] { clear(); }, [&] { return make(kAll, nullptr); },
                 [&](OSStatus status) { EXPECT_EQ(names().empty(), status != noErr); });
    EXPECT_EQ(make(0, nullptr), dupFNErr);
    const auto expect = [&](const FSCatalogInfo& wanted) {
        const FSCatalogInfo found = info(d, kAll);
        EXPECT_EQ(std::memcmp(&found.contentModDate, &wanted.contentModDate, 8), 0);
        EXPECT_EQ(std::memcmp(&found.accessDate, &wanted.accessDate, 8), 0);
        EXPECT_EQ(+found.extFinderInfo.fdScript, +wanted.extFinderInfo.fdScript);
        EXPECT_EQ(found.permissions.mode & 07777, wanted.permissions.mode);
    };
    failEachCall([&] { ASSERT_EQ(FSSetCatalogInfo(&d, kAll, &first), noErr); },
                 [&] { return FSSetCatalogInfo(&d, kAll, &second); },
                 [&](OSStatus status) { expect(status == noErr ? second : first); });
    EXPECT_EQ(FSSetCatalogInfo(&d, kAll | kFSCatInfoCreateDate, &first), unimpErr);
    expect(second);
    clear();
    FSSpec spec{}, child{};
    EXPECT_EQ(make(0, &spec), noErr);
    EXPECT_EQ(info(d, kFSCatInfoPermissions).permissions.mode & 0022, 0);
    EXPECT_EQ(info(d, kFSCatInfoNodeID).nodeID, id);
    const auto* const leaf = reinterpret_cast<const UInt8*>("\1c");
    EXPECT_EQ(FSMakeFSSpec(spec.vRefNum, static_cast<SInt32>(id), leaf, &child), fnfErr)
        << "the ID names the folder";
}

}  // namespace
}  // namespace osa::test
