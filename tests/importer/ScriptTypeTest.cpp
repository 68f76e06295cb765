// The kind, result and log line of every type, creator and content that the importer tells apart,
// through the loaded plug-in.
#include "importer/ScriptType.h"

#include "tests/support/ImportFixture.h"

namespace osa::test {
namespace {

using samples::Json;

const Json kTrailer = {{"hex", "00 FADEDEAD"}};
const Json kTrailerAlone = {{"hex", "FADEDEAD"}};
const Json kTrailerInside = {{"hex", "FADEDEAD 00"}};
const Json kText = {{"text", "beep"}};
const Json kSettings = {{{"type", "plst"}, {"id", 0}, {"hex", "00"}}};
const Json kScript = {{{"type", "scpt"}, {"id", 128}, {"hex", "00"}}};

constexpr char kNotFoundLine[] = "OSAImporter: unexpected Mac OS error: -43";

struct FileRow {
    const char *name, *type, *creator;
    Json data, resources;
    ScriptType kind;
    bool imported, logs;
};

const FileRow kFiles[] = {
    {"text type goes before a trailer", "TEXT", "ToyS", kTrailer, {}, 1, false, false},
    {"the other text type", "sEXT", "ToyS", kText, kScript, 1, false, false},
    {"untyped text", "", "", kText, {}, 1, false, false},
    {"untyped and empty", "", "", {}, {}, 1, false, false},
    {"four bytes are no script", "", "", kTrailerAlone, {}, 1, false, false},
    {"a trailer that is not at the end", "", "", kTrailerInside, {}, 1, false, false},
    {"untyped script without fork", "", "", kTrailer, {}, 2, false, true},
    {"untyped script with fork", "", "", kTrailer, kScript, 2, true, false},
    {"typed script in the data fork", "osas", "ToyS", kTrailer, kScript, 2, true, false},
    {"typed script in the fork", "osas", "ToyS", {}, kScript, 3, true, false},
    {"its other type", "ssas", "ToyS", kTrailerAlone, kScript, 3, true, false},
    {"typed script that lost its fork", "osas", "ToyS", {}, {}, 3, false, true},
    {"applet with settings", "APPL", "aplt", {}, kSettings, 5, true, false},
    {"droplet with settings", "APPL", "dplt", kTrailer, kSettings, 5, true, false},
    {"applet without", "APPL", "aplt", {}, kScript, 7, true, false},
    {"applet that lost its fork", "APPL", "dplt", {}, {}, 7, false, true},
    {"another application", "APPL", "ToyS", kTrailer, kSettings, 9, false, false},
    {"excluded", "asDF", "ToyS", kTrailer, kScript, 8, false, false},
    {"excluded too", "ssDF", "ToyS", {}, {}, 8, false, false},
    {"a question mark is a type", "????", "????", kTrailer, kScript, 9, false, false},
    {"types differ by case", "text", "ToyS", kText, {}, 9, false, false},
    {"a bundle's type on a file", "BNDL", "ToyS", kText, {}, 9, false, false},
};

TEST(ScriptType, OfFilesFollowsTypeThenContent) {
    const auto host = loadImporter();
    for (const FileRow& row : kFiles) {
        SCOPED_TRACE(row.name);
        const TemporaryFolder folder;
        Json sample = {{"name", "item"}};
        if (row.type[0] != '\0') sample.update({{"type", row.type}, {"creator", row.creator}});
        if (!row.data.is_null()) sample["data"] = row.data;
        if (!row.resources.is_null()) sample["resources"] = row.resources;
        const auto record = host->import(samples::writeSample(sample, folder.path()));
        EXPECT_EQ(record.kind.value_or(0), row.kind);
        EXPECT_EQ(record.imported, row.imported);
        const std::vector<std::string> expected = {kNotFoundLine};
        EXPECT_EQ(record.log, row.logs ? expected : std::vector<std::string>());
        EXPECT_EQ(record.error, "");
    }
}

const std::tuple<const char*, const char*, const char*, bool, ScriptType> kBundles[] = {
    {"script bundle by its type", "a.scptd", "osasToyS", true, 4},
    {"script bundle as a plain bundle", "a.scptd", "BNDL????", true, 4},
    {"script bundle by layout alone", "a", nullptr, true, 4},
    {"too short a PkgInfo is none", "a.app", "BNDL", true, 6},
    {"bundle without a script", "a.bundle", "BNDL????", false, 9},
    {"script type without a script", "a.scptd", "osasToyS", false, 3},
    {"applet", "a.app", "APPLaplt", true, 6},
    {"applet of another creator", "a.app", "APPLabcd", true, 6},
    {"application without a script", "a.app", "APPLabcd", false, 9},
    {"applet without a script", "a.app", "APPLdplt", false, 7},
    {"text type goes before the layout", "a.scptd", "TEXTToyS", true, 1},
};

TEST(ScriptType, OfBundlesFollowsPackageTypeThenLayout) {
    const auto host = loadImporter();
    for (const auto& [name, place, packageInfo, hasScript, kind] : kBundles) {
        SCOPED_TRACE(name);
        const TemporaryFolder folder;
        const std::string item = folder.path(place);
        folder.write(std::string(place) + "/Contents/Resources/x", "");
        if (hasScript)
            folder.write(std::string(place) + "/Contents/Resources/Scripts/main.scpt", "");
        if (packageInfo != nullptr) {
            folder.write(std::string(place) + "/Contents/PkgInfo", packageInfo);
        }
        const auto record = host->import(item);
        EXPECT_EQ(record.kind.value_or(0), kind);
        EXPECT_EQ(record.imported,
                  kind == kScriptTypeBundleScript || kind == kScriptTypeBundleApplet);
    }
}

TEST(ScriptType, CannotBeToldOfWhatIsNoFileAndNoBundle) {
    const auto host = loadImporter();
    const TemporaryFolder folder;
    folder.write("Plain/file", "");
    for (const std::string& path :
         {folder.path("Plain"), folder.path("missing"), folder.path("missing/x")}) {
        const auto record = host->import(path);
        EXPECT_FALSE(record.kind.has_value());
        EXPECT_NE(record.error, "");
        testing::internal::CaptureStderr();
        EXPECT_FALSE(host->callImporter(path, service::ImporterHost::makeAttributes().get()));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(kNotFoundLine) + "\n");
    }
}

TEST(BundleAttributes, ComeFromInsideTheBundleForBundlesAndFromBesideForText) {
    const auto host = loadImporter();
    const TemporaryFolder folder;
    const auto list = [&](const char* where) {
        return std::string("{ \"meta-data\" = { where = ") + where + "; }; }";
    };
    folder.write("Contents/Brindle.list", list("beside"));
    folder.write("a.scptd/Contents/Brindle.list", list("inside"));
    folder.write("a.scptd/Contents/Resources/Scripts/main.scpt", "");
    const auto where = [&](const std::string& item) {
        const auto record = host->import(item);
        const auto value = CFDictionaryGetValue(record.attributes.get(), CFSTR("where"));
        return value == nullptr ? "nowhere" : CFEqual(value, CFSTR("inside")) ? "inside" : "beside";
    };
    EXPECT_STREQ(where(folder.path("a.scptd")), "inside");
    Json text = {{"name", "text"}, {"type", "TEXT"}, {"resources", kScript}};
    EXPECT_STREQ(where(samples::writeSample(text, folder.path())), "beside");
    text.erase("resources");
    text["name"] = "forkless";
    EXPECT_STREQ(where(samples::writeSample(text, folder.path())), "nowhere")
        << "its resources do not open";
}

}  // namespace
}  // namespace osa::test
