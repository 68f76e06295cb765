// Scripts in files: which of their forms is read, and where storing puts a script.
#include <CoreServices/Resources.h>
#include <OpenScripting/OSAGeneric.h>

#include <tuple>

#include "tests/platform/files/FileFixture.h"
#include "tests/platform/osa/FakeComponent.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

using Language = FakeLanguage<'Ffak'>;

std::string stored(const std::string& script) {
    return std::string(asText(makeStoredScript(asBytes(script), 'Ffak')));
}

class ScriptFiles : public FileFixture {
  protected:
    ScriptFiles() {
        EXPECT_EQ(OSARegisterComponent('Ffak', "Fake", Language::calls(), &component_), noErr);
        generic_ = OpenDefaultComponent(kOSAComponentType, kOSAGenericScriptingComponentSubtype);
        EXPECT_EQ(OSASetDefaultScriptingComponent(generic_, 'Ffak'), noErr);
    }
    ~ScriptFiles() override {
        CloseComponent(generic_);
        EXPECT_EQ(OSAUnregisterComponent(component_), noErr);
        EXPECT_EQ(OSALiveBlockCount(), blocks_);
        EXPECT_EQ(OSAOpenFileCount(), 0);
    }
    void start(const std::string& data, const std::string& fork) {
        put("file", data);
        if (!fork.empty()) put("._file", samples::wrappedFork(fork));
    }
    /// The script's source, marked when it cannot be stored; or the status.
    std::string load(OSAID& id) {
        Boolean storable = 2;
        const FSRef file = ref("file");
        OSAError status = OSALoadFile(generic_, &file, &storable, 0, &id);
        if (status != noErr) return std::to_string(status);
        AEDesc source;
        status = OSAGetSource(generic_, id, typeUTF8Text, &source);
        const std::string text = bytesOf(source) + (storable != 0 ? "" : " (not storable)");
        AEDisposeDesc(&source);
        return text;
    }
    std::string load() {
        OSAID id = 0;
        return load(id);
    }

    const CFIndex blocks_ = OSALiveBlockCount();
    Component component_ = nullptr;
    ComponentInstance generic_ = nullptr;
};

TEST_F(ScriptFiles, ReadsEveryForm) {
    using namespace std::string_literals;
    const std::string fork =
        samples::ResourceForkBuilder().add('scpt', 128, stored("resource")).text();
    const std::string otherID = samples::ResourceForkBuilder().add('scpt', 0, "no").text();
    std::string foreign = stored("x");
    foreign.replace(foreign.size() - 12, 4, "ascr");
    const std::tuple<std::string, std::string, std::string> table[] = {
        {stored("data"), "", "data"},
        {stored("data"), fork, "resource"},
        {"#!/bin/osa\n" + stored("data"), "", "data (not storable)"},
        {"text", otherID, "text (not storable)"},
        {stored(""), "", " (not storable)"},
        {"gr\xC3\xBC\xC3\x9F", "", "gr\xC3\xBC\xC3\x9F (not storable)"},
        {"gr\x9F\xA7", "", "gr\xC3\xBC\xC3\x9F (not storable)"},
        {"\xFF\xFEg\0\xFC\0"s, "", "g\xC3\xBC (not storable)"},
        {"\xFE\xFF\0g\0\xFC"s, "", "g\xC3\xBC (not storable)"},
        {"\xEF\xBB\xBF"
         "g",
         "", "g (not storable)"},
        {"", "", " (not storable)"},
        {"FasdUAS\0cut"s, "", std::to_string(errOSABadStorageType)},
        {"bad", "", std::to_string(errOSAScriptError)},
        {foreign, "", std::to_string(errOSACantOpenComponent)},
        {"", std::string(300, 'x'), std::to_string(mapReadErr)},
        {"text", std::string(300, 'x'), "text (not storable)"},
    };
    for (const auto& [data, resources, expected] : table) {
        start(data, resources);
        EXPECT_EQ(load(), expected) << data;
        std::filesystem::remove(at("._file"));
    }
    const FSRef folder = ref("");
    OSAID id = 0;
    EXPECT_EQ(OSALoadFile(generic_, &folder, nullptr, 0, &id), notAFileErr);
    start(foreign, "");
    OSType subType = 0;
    const FSRef file = ref("file");
    EXPECT_EQ(OSAGetStoredSubType(&file, &subType), noErr);
    EXPECT_EQ(subType, OSType('ascr'));
}

TEST_F(ScriptFiles, StoresWhereTheScriptWas) {
    // data, type of the file, where it is found afterwards
    const std::string fork =
        samples::ResourceForkBuilder().add('TEXT', 1, "kept").add('scpt', 128, "old").text();
    const std::string other = samples::ResourceForkBuilder().add('TEXT', 1, "kept").text();
    const std::tuple<std::string, bool, bool> table[] = {
        {fork, true, false}, {fork, true, true}, {other, false, false}, {"", false, false}};
    start("new script", "");
    OSAID script = 0;
    load(script);
    for (const auto& [resources, isResource, isOpen] : table) {
        const std::string before = "a longer text than the script";
        start(before, resources);
        const FSRef file = ref("file");
        const ResFileRefNum open = isOpen ? FSOpenResFile(&file, fsRdWrPerm) : ResFileRefNum{0};
        EXPECT_EQ(OSAStoreFile(generic_, script, typeOSAGenericStorage, 0, &file), noErr);
        EXPECT_EQ(CurResFile(), open);
        if (isOpen) CloseResFile(open);
        if (isOpen) {
            EXPECT_EQ(ResError(), noErr);
        }
        EXPECT_EQ(content("file"), isResource ? before : stored("new script"));
        EXPECT_EQ(load(), "new script");
        FSCatalogInfo info;
        EXPECT_EQ(FSGetCatalogInfo(&file, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr),
                  noErr);
        EXPECT_EQ(info.finderInfo.fdType, OSType('osas'));
        if (!resources.empty()) {
            const ResFileRefNum number = FSOpenResFile(&file, fsRdPerm);
            EXPECT_NE(Get1Resource('TEXT', 1), nullptr);
            CloseResFile(number);
        }
        std::filesystem::remove(at("._file"));
    }
    start("short",
          samples::ResourceForkBuilder().add('scpt', 128, "old", nullptr, resProtected).text());
    const FSRef file = ref("file");
    EXPECT_EQ(OSAStoreFile(generic_, script, typeOSAGenericStorage, 0, &file), resAttrErr);
    EXPECT_EQ(OSAStoreFile(generic_, 99, typeOSAGenericStorage, 0, &file), errOSAInvalidID);
    EXPECT_EQ(content("file"), "short");
}

TEST_F(ScriptFiles, FailingCallsLeaveOneScriptOrTheOther) {
    const std::string fork = samples::ResourceForkBuilder().add('scpt', 128, stored("old")).text();
    for (const std::string& resources : {fork, std::string()}) {
        OSAID script = 0;
        FSRef file;
        start("new", "");
        load(script);
        failEachCall(
            [&] {
                start(stored("old"), resources);
                file = ref("file");
            },
            [&] {
                OSAID loaded = 0;
                OSAError status = OSALoadFile(generic_, &file, nullptr, 0, &loaded);
                if (status == noErr) OSADispose(generic_, loaded);
                if (status == noErr)
                    status = OSAStoreFile(generic_, script, typeOSAGenericStorage, 0, &file);
                return status;
            },
            [&](OSStatus status) {
                const std::string now = load();
                EXPECT_TRUE(now == "new" || (status != noErr && now == "old"))
                    << now << " after " << status;
            });
        std::filesystem::remove(at("._file"));
    }
}

}  // namespace
}  // namespace osa::test
