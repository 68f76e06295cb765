// References and what the catalog tells through them.
#include <CoreServices/Folders.h>
#include <OSA/HostFolders.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/cf/StringObject.h"
#include "platform/files/Catalog.h"
#include "platform/files/Names.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

class Catalog : public FileFixture {
  protected:
    static OSStatus query(const FSRef& object, FSCatalogInfoBitmap which = kFSCatInfoNodeID) {
        FSCatalogInfo info;
        return FSGetCatalogInfo(&object, which, &info, nullptr, nullptr, nullptr);
    }

    static OSStatus child(const FSRef& folder, std::u16string_view name, FSRef* made = nullptr) {
        return FSMakeFSRefUnicode(&folder, name.size(),
                                  reinterpret_cast<const UniChar*>(name.data()), 0, made);
    }
};

TEST_F(Catalog, KnowsDeadReferencesFromBadOnes) {
    put("a");
    put("b");
    put("gone");
    const FSRef a = ref("a"), gone = ref("gone");
    FSRef garbage;
    std::fill(std::begin(garbage.hidden), std::end(garbage.hidden), UInt8{0x5A});
    fs::remove(at("gone"));
    EXPECT_EQ(query(FSRef{}), errFSBadFSRef);
    EXPECT_EQ(query(garbage), errFSBadFSRef);
    EXPECT_EQ(query(gone), fnfErr);
    EXPECT_EQ(FSCompareFSRefs(&a, &gone), fnfErr);
    fs::rename(at("b"), at("a"));
    EXPECT_EQ(query(a), fnfErr) << "another object has the place";
    EXPECT_EQ(fork(a, ForkKind::data), "status -43");
    EXPECT_EQ(query(ref("a")), noErr);
    const FSRef reborn = ref("a");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    fs::remove(at("a"));
    put("a");
    EXPECT_EQ(query(reborn), fnfErr) << "even where the new object got the old one's inode";
    EXPECT_EQ(FSGetCatalogInfo(nullptr, 0, nullptr, nullptr, nullptr, nullptr), paramErr);
}

TEST_F(Catalog, FindsChildrenByExactNameOnly) {
    const std::string longName(100, 'n');
    put("plain");
    put("a:b");
    put("\xF0\x9F\x90\xA7");
    put(longName);
    fs::create_directory_symlink("plain", at("link"));
    const std::tuple<const char*, std::u16string, OSStatus> rows[] = {
        {"plain", u"plain", noErr},
        {"zeros behind the name", std::u16string(u"plain\0\0\0", 8), noErr},
        {"a zero inside the name", std::u16string(u"pl\0in", 5), bdNamErr},
        {"a slash, which is a colon on disk", u"a/b", noErr},
        {"a colon", u"a:b", bdNamErr},
        {"beyond the basic plane", u"\U0001F427", noErr},
        {"too long for a place in the reference", std::u16string(100, u'n'), noErr},
        {"other case", u"PLAIN", fnfErr},
        {"the folder itself", u".", fnfErr},
        {"the folder above", u"..", fnfErr},
        {"empty", u"", errFSMissingName},
        {"255 units", std::u16string(255, u'x'), fnfErr},
        {"256 units", std::u16string(256, u'x'), errFSNameTooLong},
        {"a link, not followed", u"link", noErr},
    };
    const FSRef folder = ref("");
    for (const auto& [wantedName, given, status] : rows) {
        SCOPED_TRACE(wantedName);
        FSRef made{};
        EXPECT_EQ(child(folder, given, &made), status);
        if (status != noErr) continue;
        HFSUniStr255 name;
        FSRef parent;
        ASSERT_EQ(FSGetCatalogInfo(&made, 0, nullptr, &name, nullptr, &parent), noErr);
        EXPECT_EQ(std::u16string(name.unicode, name.unicode + name.length),
                  given.substr(0, given.find(u'\0')));
        EXPECT_EQ(FSCompareFSRefs(&parent, &folder), noErr);
        EXPECT_EQ(FSCompareFSRefs(&made, &folder), errFSRefsDifferent);
    }
    EXPECT_EQ(child(ref("plain"), u"x"), errFSNotAFolder);
}

TEST_F(Catalog, SpellsPathsWithoutLinks) {
    put("real/file");
    fs::create_directory_symlink("real", at("link"));
    fs::create_symlink("../real/file", at("real/again"));
    put("\xFF.bad");
    const std::string file = at("real/file");
    EXPECT_EQ(pathOf(ref("link/file")), file);
    EXPECT_EQ(pathOf(ref("link/again")), file);
    EXPECT_EQ(pathOf(ref("real/../link/./file")), file);
    EXPECT_EQ(pathOf(ref("link/")), at("real"));
    EXPECT_EQ(pathOf(ref("\xFF.bad")), at("\xFF.bad")) << "a name that is no text still has a path";
    HFSUniStr255 name;
    const FSRef bad = ref("\xFF.bad");
    EXPECT_EQ(FSGetCatalogInfo(&bad, 0, nullptr, &name, nullptr, nullptr), bdNamErr);

    fs::create_directory(at("other"));
    put("other/file");
    fs::remove(at("link"));
    fs::create_directory_symlink("other", at("link"));
    EXPECT_EQ(pathOf(ref("link/file")), at("other/file")) << "the link leads elsewhere by now";

    std::vector<UInt8> exact(file.size() + 1);
    const FSRef made = ref("real/file");
    EXPECT_EQ(FSRefMakePath(&made, exact.data(), static_cast<UInt32>(exact.size())), noErr);
    EXPECT_EQ(FSRefMakePath(&made, exact.data(), static_cast<UInt32>(exact.size() - 1)),
              pathTooLongErr);
    const auto isFolderAt = [](const std::string& path) {
        FSRef none;
        Boolean isFolder = 9;
        const auto* const bytes = reinterpret_cast<const UInt8*>(path.c_str());
        return FSPathMakeRef(bytes, &none, &isFolder) == noErr ? isFolder : -1;
    };
    EXPECT_EQ(isFolderAt(file + "/"), -1);
    EXPECT_EQ(isFolderAt(file), 0);
    EXPECT_EQ(isFolderAt(root_), 1);
}

TEST_F(Catalog, EndsAtTheRoot) {
    const FSRef root = refOf("/");
    FSRef parent;
    ASSERT_EQ(FSGetCatalogInfo(&root, 0, nullptr, nullptr, nullptr, &parent), noErr);
    EXPECT_EQ(query(parent), errFSBadFSRef);
    const FSCatalogInfo is = info(root, kFSCatInfoNodeID | kFSCatInfoParentDirID);
    EXPECT_EQ(+is.nodeID, 2u);
    EXPECT_GT(+info(refOf("/dev/shm"), kFSCatInfoNodeID).nodeID, 2u) << "number 1 on its volume";
    EXPECT_EQ(+is.parentDirID, 1u);
}

TEST_F(Catalog, AgreesWithTheSystemAboutEveryField) {
    const std::string path = put("d/x", "12345");
    put("d/._x", appleDouble(finderInfo(1, 2), "fork"));
    const timespec times[2] = {{-3600, 0}, {4102444800, 500'000'000}};  // before 1970, in 2100
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const FSCatalogInfo x = info(ref("d/x"), kFSCatInfoGettableInfo);
    struct stat real {};
    ASSERT_EQ(lstat(path.c_str(), &real), 0);
    EXPECT_EQ(x.nodeFlags, 0);
    EXPECT_LT(x.volume, 0);
    EXPECT_EQ(+x.nodeID, static_cast<UInt32>(real.st_ino) ^ static_cast<UInt32>(real.st_ino >> 32));
    EXPECT_EQ(x.permissions.mode, real.st_mode);
    EXPECT_EQ(+x.permissions.userID, real.st_uid);
    EXPECT_EQ(+x.dataLogicalSize, 5u);
    EXPECT_EQ(+x.rsrcLogicalSize, 4u);
    EXPECT_EQ(+x.accessDate.lowSeconds, 2082844800u - 3600);
    EXPECT_EQ(x.contentModDate.highSeconds, 1);
    EXPECT_EQ(+x.contentModDate.lowSeconds, static_cast<UInt32>(4102444800 + 2082844800));
    EXPECT_EQ(x.contentModDate.fraction, 0x8000);

    const FSCatalogInfo folder = info(ref("d"), kFSCatInfoGettableInfo);
    EXPECT_EQ(folder.nodeFlags, kFSNodeIsDirectoryMask);
    EXPECT_EQ(+folder.nodeID, +x.parentDirID);
    EXPECT_EQ(+folder.valence, 1u) << "the side file does not count";
    EXPECT_EQ(query(ref("d"), kFSCatInfoRsrcSizes), fnfErr) << "nothing but sizes of a folder";
    EXPECT_EQ(query(ref("d"), kFSCatInfoRsrcSizes | kFSCatInfoNodeID), noErr);

    FSCatalogInfo change = x;
    change.permissions.mode = 0444;
    const FSRef made = ref("d/x");
    EXPECT_EQ(FSSetCatalogInfo(&made, kFSCatInfoPermissions, &change), noErr);
    EXPECT_EQ(FSSetCatalogInfo(&made, kFSCatInfoCreateDate, &change), unimpErr);
    EXPECT_EQ(FSSetCatalogInfo(&made, kFSCatInfoNodeID, &change), paramErr);
    const FSCatalogInfo locked = info(made, kFSCatInfoNodeFlags | kFSCatInfoPermissions);
    EXPECT_EQ(locked.permissions.mode, S_IFREG | 0444);
    EXPECT_EQ(locked.nodeFlags, kFSNodeLockedMask);
}

TEST_F(Catalog, GoesFromUrlsToReferencesAndBack) {
    put("folder/with space");
    fs::create_symlink("folder/with space", at("link"));
    const std::string base = "file://" + root_;
    const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
        {"a file", base + "/folder/with%20space", "folder/with space", "/folder/with%20space"},
        {"a folder", base + "/folder", "folder", "/folder/"},
        {"a folder with a slash", base + "/folder/", "folder", "/folder/"},
        {"a link at the end", base + "/link", "folder/with space", "/folder/with%20space"},
        {"a file with a slash", base + "/folder/with%20space/", nullptr, nullptr},
        {"nothing there", base + "/none", nullptr, nullptr},
        {"another scheme", "http://localhost" + root_ + "/folder", nullptr, nullptr},
    };
    for (const auto& [name, given, found, wantedBack] : rows) {
        SCOPED_TRACE(name);
        const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateWithBytes(
            nullptr, reinterpret_cast<const UInt8*>(given.data()),
            static_cast<CFIndex>(given.size()), kCFStringEncodingUTF8, nullptr));
        FSRef object{};
        ASSERT_EQ(CFURLGetFSRef(url.get(), &object), found != nullptr ? 1 : 0);
        const auto back = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(nullptr, &object));
        ASSERT_EQ(static_cast<bool>(back), found != nullptr);
        if (found == nullptr) continue;
        EXPECT_EQ(pathOf(object), at(found));
        EXPECT_EQ(utf8Of(CFURLGetString(back.get())), base + wantedBack);
    }
    EXPECT_FALSE(CFURLGetFSRef(nullptr, nullptr));
}

TEST_F(Catalog, WalksAFolderWithoutItsSideFiles) {
    std::set<std::string> wanted{"a", "b:c", "%percent", "sub"};
    for (const std::string& name : wanted) {
        if (name != "sub") put(name);
    }
    put("sub/inside");
    for (const char* name :
         {"._a", "._orphan", ".AppleDouble/a", ".rsrc/a", ".finf/a", "__MACOSX/._a"}) {
        put(name);
    }
    put("%a", appleDouble(finderInfo(1, 2), ""));
    for (const ItemCount atOnce : {1u, 3u, 50u}) {
        SCOPED_TRACE(atOnce);
        const FSRef folder = ref("");
        FSIterator iterator = nullptr;
        ASSERT_EQ(FSOpenIterator(&folder, kFSIterateFlat, &iterator), noErr);
        std::set<std::string> seen;
        std::vector<FSRef> refs(atOnce);
        std::vector<HFSUniStr255> names(atOnce);
        ItemCount count = 0;
        OSErr status = noErr;
        while ((status = FSGetCatalogInfoBulk(iterator, atOnce, &count, nullptr, 0, nullptr,
                                              refs.data(), nullptr, names.data())) == noErr) {
            ASSERT_GT(count, 0u);
            for (ItemCount i = 0; i < count; ++i) {
                EXPECT_TRUE(seen.insert(pathOf(refs[i]).substr(root_.size() + 1)).second);
                EXPECT_EQ(
                    child(folder, {reinterpret_cast<char16_t*>(names[i].unicode), names[i].length}),
                    noErr);
            }
        }
        EXPECT_EQ(status, errFSNoMoreItems);
        EXPECT_EQ(count, 0u);
        EXPECT_EQ(seen, wanted);
        EXPECT_EQ(FSCloseIterator(iterator), noErr);
    }
    FSIterator iterator = nullptr;
    const FSRef file = ref("a");
    EXPECT_EQ(FSOpenIterator(&file, kFSIterateFlat, &iterator), errFSNotAFolder);
}

TEST_F(Catalog, NamesObjectsTheOldWay) {
    put("d/caf\xC3\xA9");
    FSSpec spec;
    const FSRef file = ref("d/caf\xC3\xA9");
    ASSERT_EQ(FSGetCatalogInfo(&file, 0, nullptr, nullptr, &spec, nullptr), noErr);
    EXPECT_EQ(std::string(spec.name, spec.name + 5),
              "\x04"
              "caf\x8E");
    FSRef made;
    ASSERT_EQ(FSpMakeFSRef(&spec, &made), noErr);
    EXPECT_EQ(FSCompareFSRefs(&made, &file), noErr);

    FSSpec missing;
    const unsigned char leaf[] = "\x04none";
    EXPECT_EQ(FSMakeFSSpec(spec.vRefNum, spec.parID, leaf, &missing), fnfErr);
    EXPECT_EQ(+missing.parID, +spec.parID) << "filled although the leaf is missing";
    EXPECT_EQ(FSpMakeFSRef(&missing, &made), fnfErr);
    EXPECT_EQ(FSMakeFSSpec(spec.vRefNum, 0x7FFFFFF1, leaf, &missing), dirNFErr);

    HFSUniStr255 volume;
    ASSERT_EQ(FSGetVolumeInfo(spec.vRefNum, 0, nullptr, 0, nullptr, &volume, nullptr), noErr);
    FSRef mount;
    ASSERT_EQ(FSGetVolumeInfo(spec.vRefNum, 0, nullptr, 0, nullptr, nullptr, &mount), noErr);
    std::string full = at("d/caf\x8E").substr(pathOf(mount) == "/" ? 0 : pathOf(mount).size());
    std::replace(full.begin(), full.end(), '/', ':');
    full = std::string(volume.unicode, volume.unicode + volume.length) + full;
    full.insert(full.begin(), static_cast<char>(full.size()));
    ASSERT_EQ(FSMakeFSSpec(0, 0, reinterpret_cast<const unsigned char*>(full.data()), &spec),
              noErr);
    ASSERT_EQ(FSpMakeFSRef(&spec, &made), noErr);
    EXPECT_EQ(FSCompareFSRefs(&made, &file), noErr);
}

TEST_F(Catalog, FindsSpecialFoldersBelowTheHostsRoot) {
    OSASetHostFolderRoot(root_.c_str());
    // Tests of the library's folders ask for the others.
    const std::tuple<OSType, const char*> rows[] = {
        {kTemporaryFolderType, "/tmp"},
        {kPreferencesFolderType, "/.config"},
        {kTrashFolderType, "/.local/share/Trash/files"},
    };
    const FSVolumeRefNum volume = info(ref(""), kFSCatInfoVolume).volume;
    for (const auto& [type, path] : rows) {
        SCOPED_TRACE(path);
        FSRef found;
        if (type == kTrashFolderType) {
            EXPECT_EQ(FSFindFolder(volume, type, kDontCreateFolder, &found), fnfErr);
        }
        ASSERT_EQ(FSFindFolder(volume, type, kCreateFolder, &found), noErr);
        EXPECT_EQ(pathOf(found), root_ + path);
    }
    fs::create_directory(at("Library"));
    FSRef found;
    ASSERT_EQ(FSFindFolder(kUserDomain, kPreferencesFolderType, kCreateFolder, &found), noErr);
    EXPECT_EQ(pathOf(found), at("Library/Preferences"));
    EXPECT_EQ(FSFindFolder(kUserDomain, FourCC("????"), kCreateFolder, &found), fnfErr);
    EXPECT_EQ(FSFindFolder(0, kTrashFolderType, kDontCreateFolder, &found), nsvErr);
    OSASetHostFolderRoot(nullptr);
    EXPECT_EQ(FSFindFolder(kUserDomain, kTemporaryFolderType, kDontCreateFolder, &found), noErr);
}

}  // namespace
}  // namespace osa::test
