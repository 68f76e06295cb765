// Bundles: layouts, package information, localised resources and values, and what leads out of
// them.
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFPlugIn.h>

#include "platform/bundles/BundleLayout.h"
#include "platform/cf/StringObject.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

CFRef<CFBundleRef> bundleAt(const std::string& path) {
    return CFRef<CFBundleRef>::Adopt(CFBundleCreate(kCFAllocatorDefault, urlOf(path, true).get()));
}

std::string pathOf(CFURLRef owned) {
    const auto url = CFRef<CFURLRef>::Adopt(owned);
    char path[4096];
    if (!url) return "(none)";
    CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(path), sizeof path);
    return path;
}

std::string text(CFStringRef owned) {
    return utf8Of(CFRef<CFStringRef>::Adopt(owned).get());
}

TEST(Bundle, IsRecognisedByLayoutAndPutsItsResourcesWhereThatSays) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"a/Contents/x", "a", "a/Contents/Resources"},
        {"a/Support Files/x", "a", "a/Support Files/Resources"},
        {"a/Info.plist", "a", "a"},
        {"a/PkgInfo", "a", "a"},
        {"a/Resources/Info.plist", "a", "a/Resources"},
        {"a.scptd/x", "a.scptd", "a.scptd"},
        {"a.app/Resources/x", "a.app", "a.app/Resources"},
        {"a/Resources/x", "a", nullptr},
        {"a.rtfd/TXT.rtf", "a.rtfd", nullptr},
        {"a.app", "a.app", nullptr},
        {"x", "missing.app", nullptr},
    };
    for (const auto& [file, wantedBundle, resources] : rows) {
        SCOPED_TRACE(file);
        const TemporaryFolder folder;
        folder.write(file, "");
        const auto bundle = bundleAt(folder.path(wantedBundle));
        ASSERT_EQ(static_cast<bool>(bundle), resources != nullptr);
        if (!bundle) continue;
        EXPECT_EQ(pathOf(CFBundleCopyResourcesDirectoryURL(bundle.get())), folder.path(resources));
        EXPECT_EQ(pathOf(CFBundleCopyBundleURL(bundle.get())), folder.path(wantedBundle));
    }
}

TEST(Bundle, IsFoundAroundItsProgramsAlone) {
    const TemporaryFolder folder;
    for (const char* const file : {"a.app/Contents/Info.plist", "b.app/x", "c/PkgInfo", "d/x"}) {
        folder.write(file, "");
    }
    const std::pair<const char*, std::string> rows[] = {
        {"a.app/Contents/Linux/p", "/a.app"},
        {"a.app/Contents/MacOS/p", "/a.app"},
        {"a.app/Contents/p", ""},
        {"a.app/Contents/Linux/in/p", ""},
        {"a.app/Contents/Resources/p", ""},
        {"b.app/p", "/b.app"},
        {"b.app/MacOS/p", "/b.app"},
        {"b.app/other/p", ""},
        {"c/p", ""},
        {"d/Linux/p", ""},
    };
    for (const auto& [program, bundle] : rows) {
        const auto layout = enclosingBundle(folder.path(program));
        EXPECT_EQ(layout ? layout->root.substr(folder.path().size()) : "", bundle) << program;
    }
    EXPECT_FALSE(enclosingBundle("/p") || enclosingBundle("p") || enclosingBundle(""));
}

TEST(Bundle, TakesPackageInformationFromTheFirstPlaceThatHasIt) {
    const char* const plist =
        "{ CFBundlePackageType = \"osas\"; CFBundleSignature = \"T\\U00f6yS\"; }";
    const std::tuple<const char*, const char*, const char*, UInt32, UInt32> rows[] = {
        {"a.app", "APPLaplt and more", plist, 'APPL', 'aplt'},
        {"a.app", "APPLapl", plist, 'osas', 0x549A7953},
        {"a.app", nullptr, "{ CFBundlePackageType = toolong; }", 'APPL', 0x3F3F3F3F},
        {"a.framework", nullptr, nullptr, 'FMWK', 0x3F3F3F3F},
        {"a.scptd", nullptr, "( not, a, dictionary )", 'BNDL', 0x3F3F3F3F},
    };
    for (const auto& [name, packageInfo, information, wantedType, wantedCreator] : rows) {
        const TemporaryFolder folder;
        const std::string contents = std::string(name) + "/Contents/";
        folder.write(contents + "x", "");
        if (packageInfo != nullptr) folder.write(contents + "PkgInfo", packageInfo);
        if (information != nullptr) folder.write(contents + "Info.plist", information);
        UInt32 type = 0, creator = 0;
        CFBundleGetPackageInfo(bundleAt(folder.path(name)).get(), &type, &creator);
        EXPECT_EQ(type, wantedType) << name;
        EXPECT_EQ(creator, wantedCreator) << name;
    }
}

TEST(Bundle, PrefersTheUsersLanguageThenTheRegionAndNeverLeavesItself) {
    const TemporaryFolder folder;
    const std::string resources = "b.app/Contents/Resources/";
    folder.write("secret.rtf", "");
    folder.write("b.app/Contents/Info.plist",
                 "{ CFBundleName = Plain; CFBundleDevelopmentRegion = French; Other = here; }");
    folder.write(resources + "everywhere.rtf", "");
    for (const char* const language : {"de", "French", "English"}) {
        const std::string lproj = resources + language + ".lproj/";
        folder.write(lproj + "everywhere.rtf", "");
        folder.write(lproj + "InfoPlist.strings",
                     std::string("CFBundleName = \"") + language + "\";");
        folder.write(lproj + "Localizable.strings",
                     std::string("greeting = \"") + language + "\";");
    }
    folder.write(resources + "French.lproj/only.rtf", "");
    setenv("LANGUAGE", "tlh:de_AT.UTF-8", 1);
    const auto bundle = bundleAt(folder.path("b.app"));
    const auto find = [&](CFStringRef name) {
        return pathOf(CFBundleCopyResourceURL(bundle.get(), name, CFSTR("rtf"), nullptr));
    };
    EXPECT_EQ(find(CFSTR("everywhere")), folder.path(resources + "everywhere.rtf"));
    EXPECT_EQ(find(CFSTR("only")), folder.path(resources + "French.lproj/only.rtf"));
    EXPECT_EQ(find(CFSTR("../../../secret")), "(none)");
    EXPECT_TRUE(
        CFEqual(CFBundleGetValueForInfoDictionaryKey(bundle.get(), kCFBundleNameKey), CFSTR("de")));
    EXPECT_TRUE(
        CFEqual(CFBundleGetValueForInfoDictionaryKey(bundle.get(), CFSTR("Other")), CFSTR("here")));
    const auto localized = [&](CFStringRef key, CFStringRef value, CFStringRef table) {
        return text(CFBundleCopyLocalizedString(bundle.get(), key, value, table));
    };
    EXPECT_EQ(localized(CFSTR("greeting"), nullptr, nullptr), "de");
    EXPECT_EQ(localized(CFSTR("missing"), CFSTR("value"), nullptr), "value");
    EXPECT_EQ(localized(CFSTR("missing"), nullptr, CFSTR("NoTable")), "missing");
    unsetenv("LANGUAGE");
}

TEST(PlugIn, RegistersItsFactoriesForAsLongAsItLives) {
    const TemporaryFolder folder;
    const std::string contents = "p.bundle/Contents/";
    folder.write(contents + "Info.plist",
                 "{ CFBundleExecutable = none; CFPlugInFactories = {"
                 "\"00000000-0000-0000-0000-000000000001\" = make; nonsense = make; };"
                 "CFPlugInTypes = { \"00000000-0000-0000-0000-00000000000A\" ="
                 "( \"00000000-0000-0000-0000-000000000001\", nonsense ); }; }");
    folder.write("plain.bundle/Contents/Info.plist", "{}");
    EXPECT_EQ(CFPlugInCreate(kCFAllocatorDefault, urlOf(folder.path("plain.bundle"), true).get()),
              nullptr);
    const auto plugIn = CFRef<CFPlugInRef>::Adopt(
        CFPlugInCreate(kCFAllocatorDefault, urlOf(folder.path("p.bundle"), true).get()));
    ASSERT_TRUE(plugIn);
    const auto type = CFRef<CFUUIDRef>::Adopt(
        CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR("00000000-0000-0000-0000-00000000000a")));
    const auto factories = CFRef<CFArrayRef>::Adopt(
        CFPlugInFindFactoriesForPlugInTypeInPlugIn(type.get(), plugIn.get()));
    ASSERT_EQ(CFArrayGetCount(factories.get()), 1);
    const auto factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories.get(), 0));
    EXPECT_EQ(CFPlugInInstanceCreate(kCFAllocatorDefault, factory, type.get()), nullptr)
        << "its program is not there";
    const CFIndex before = CFGetRetainCount(plugIn.get());
    CFPlugInAddInstanceForFactory(factory);
    EXPECT_EQ(CFGetRetainCount(plugIn.get()), before + 1);
    CFPlugInRemoveInstanceForFactory(factory);
    CFPlugInRemoveInstanceForFactory(type.get());
    EXPECT_EQ(CFGetRetainCount(plugIn.get()), before);
}

}  // namespace
}  // namespace osa::test
