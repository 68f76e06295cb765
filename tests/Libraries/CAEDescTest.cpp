// The owning descriptor against a simple model, and the forms in which it names files.
#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"

#include <CoreServices/MacMemory.h>
#include <CoreServices/Processes.h>

#include <array>
#include <optional>
#include <random>

#include "tests/support/Descriptors.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

/// What a descriptor should hold; data is none for the empty one.
struct Model {
    DescType type = typeNull;
    std::optional<std::string> data;
};

/// Three descriptors and their models, put through the same operations.
class Pairs {
  public:
    void step(std::mt19937& random) {
        const std::size_t to = random() % descs_.size();
        const std::size_t from = random() % descs_.size();
        CAEDesc& desc = descs_[to];
        Model& model = models_[to];
        switch (random() % 9) {
            case 0:
                desc.Set('TEXT', "12", 2);
                model = {'TEXT', "12"};
                break;
            case 1: {
                const Handle handle = NewHandleClear(3);
                HLock(handle);
                desc.Set('data', handle);
                EXPECT_EQ(HGetState(handle), SInt8(kHandleLockedMask - 256));
                DisposeHandle(handle);
                model = {'data', std::string(3, '\0')};
                break;
            }
            case 2:
                desc = descs_[from];
                model = models_[from];
                break;
            case 3:
                desc.Aquire(descs_[from]);
                model = from == to ? Model() : std::exchange(models_[from], Model());
                break;
            case 4:
                desc.Free();
                model = Model();
                break;
            case 5:  // impossible for all but a descriptor of that type, which is left alone
                EXPECT_EQ(thrown([&] { desc.CoerceTo('qdrt'); }), errAECoercionFail);
                break;
            case 6:
                if (model.type != 'TEXT') break;
                desc.CoerceTo('magn');
                model = {'magn', std::string("\x0C\0\0\0", 4)};
                break;
            case 7:
                EXPECT_EQ(thrown([&] { desc.Set('TEXT', nullptr, 5); }), paramErr);
                model = Model();
                break;
            default:
                desc.SetString(from == 0 ? nullptr : CFSTR("é"));
                model = from == 0 ? Model() : Model{'utxt', "\xE9" + std::string(1, '\0')};
                break;
        }
    }

    void check(CFIndex blocksBefore) const {
        CFIndex owned = 0;
        for (std::size_t i = 0; i < descs_.size(); ++i) {
            EXPECT_EQ(descs_[i].GetType(), models_[i].type);
            EXPECT_EQ(descs_[i].GetDesc().dataHandle != nullptr, models_[i].data.has_value());
            EXPECT_EQ(dataOf(descs_[i]), models_[i].data.value_or(""));
            owned += models_[i].data.has_value() ? 1 : 0;
        }
        EXPECT_EQ(OSALiveBlockCount() - blocksBefore, owned);
    }

  private:
    std::array<CAEDesc, 3> descs_;
    std::array<Model, 3> models_;
};

TEST(CAEDesc, RandomOperationsKeepWhatTheModelKeepsAndLeakNothing) {
    const NoLeaks leaks;
    const CFIndex before = OSALiveBlockCount();
    std::mt19937 random(20261121);
    Pairs pairs;
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        pairs.step(random);
        pairs.check(before);
    }
}

TEST(CAEDesc, IsMadeOfWhatItIsGiven) {
    EXPECT_EQ(dataOf(CAEDesc(true)), "\1");
    EXPECT_EQ(dataOf(CAEDesc::sFalse), std::string(1, '\0'));
    EXPECT_TRUE(CAEDesc::sTrue.GetBool());
    EXPECT_TRUE(CAEDesc::sEmpty.Empty());
    const unsigned char pascal[] = "\3abcd";
    EXPECT_EQ(dataOf(CAEDesc(pascal)), "abc");
    const ProcessSerialNumber current{0, kCurrentProcess};
    EXPECT_EQ(CAEDesc(&current).GetPSN().lowLongOfPSN, 2U);
    EXPECT_EQ(thrown([] { CAEDesc('TEXT', Handle(nullptr)); }), nilHandleErr);
    static_assert(!std::is_constructible_v<CAEDesc, const char*>);
    static_assert(!std::is_constructible_v<CAEDesc, AEDesc*>);
    static_assert(std::is_constructible_v<CAEDesc, ProcessSerialNumber*>);
    CAEDesc self = descOf('TEXT', "kept");
    self.Copy(&self.GetDesc());
    EXPECT_EQ(dataOf(self), "kept");
    self = CAEDescReader(self.GetDesc());
    self.CoerceTo(&self.GetDesc(), 'utf8');
    self.CoerceTo('TEXT', self);
    EXPECT_EQ(dataOf(self), "kept");
    const AEDesc bare{typeTrue, nullptr};
    self = CAEDescReader(bare);
    self.SetString(nullptr);
    EXPECT_TRUE(self.Is(typeNull)) << "a type without data goes too";
}

TEST(CAEDesc, FailuresOfMemoryLeaveItEmptyAndItsHandleUnlocked) {
    const Handle handle = NewHandleClear(10);
    {
        const NoLeaks leaks;
        CAEDesc desc = descOf('TEXT', "old");
        OSAFailOperation(1, true);
        EXPECT_EQ(thrown([&] { desc.Set('data', handle); }), memFullErr);
        EXPECT_EQ(thrown([&] { CAEDesc('data', handle); }), memFullErr);
        EXPECT_EQ(thrown([&] { desc.SetString(CFSTR("text")); }), memFullErr);
        EXPECT_EQ(thrown([&] { desc.MakeList(); }), memFullErr);
        OSAFailOperation(0, false);
        EXPECT_TRUE(desc.Empty());
        EXPECT_EQ(HGetState(handle), 0);
    }
    DisposeHandle(handle);
}

TEST(CAEDesc, AFileComesInTheFormThatIsAskedFor) {
    const TemporaryFolder folder;
    const std::string path = folder.write("Docs/a:b 50%.txt", "");
    const FSRef file = refOf(path), docs = refOf(folder.path("Docs"));
    const std::tuple<DescType, DescType> rows[] = {
        {'fsrf', 'fsrf'}, {'fss ', 'fss '}, {'alis', 'alis'}, {'TEXT', 'utxt'},
        {'ctxt', 'utxt'}, {'utxt', 'utxt'}, {'utf8', 'utf8'}, {'itxt', 'itxt'},
        {'STXT', 'STXT'}, {'furl', 'furl'}, {'abcd', 'furl'}};
    CAEDesc desc;
    for (const auto& [asked, given] : rows) {
        desc.SetFileSpec(&file, asked);
        EXPECT_EQ(desc.GetType(), given) << asked;
        FSRef back{};
        if (given != 'furl' && desc.IsText()) {
            std::string text;
            desc.GetStringData(text);
            EXPECT_TRUE(text.ends_with(":Docs:a/b 50%.txt")) << text;
        }
        desc.GetFileSpec(&back);
        EXPECT_EQ(FSCompareFSRefs(&file, &back), noErr) << asked;
    }
    std::string text;
    desc.SetFileSpec(&docs, 'TEXT');
    desc.GetString(text);
    EXPECT_TRUE(text.ends_with(":Docs:") && !text.ends_with("::")) << text;
    desc.SetFileSpec(&docs, 'furl');
    EXPECT_TRUE(dataOf(desc).ends_with("/Docs/"));

    FSRef found;
    descOf('TEXT', path).GetFileSpec(&found);
    EXPECT_EQ(FSCompareFSRefs(&file, &found), noErr) << "a POSIX path";
    EXPECT_EQ(thrown([&] { descOf('TEXT', path + "x").GetFileSpec(&found); }),
              cfStringConversionErr);
    EXPECT_EQ(thrown([&] { descOf('TEXT', "no path").GetFileSpec(&found); }), errAECoercionFail);
    descOf('aprl', "file://" + folder.path("Docs")).GetFileSpec(&found);
    EXPECT_EQ(FSCompareFSRefs(&docs, &found), noErr);
    EXPECT_EQ(thrown([&] { descOf('aprl', "file:///none/such").GetFileSpec(&found); }), fnfErr);
    const FSRef nothing{};
    EXPECT_EQ(thrown([&] { desc.SetFileSpec(&nothing, 'furl'); }), memFullErr);
    EXPECT_TRUE(desc.Empty());

    HFSUniStr255 leaf;
    desc.SetCFURL(&docs, [&] {
        static HFSUniStr255 name{5, {'n', '/', 'o', 'n', 'e'}};
        return &name;
    }());
    desc.GetFileSpec(&found, &leaf);
    EXPECT_EQ(FSCompareFSRefs(&docs, &found), noErr);
    EXPECT_EQ(ToTCLString(leaf), (TCLString{'n', '/', 'o', 'n', 'e'}));
}

TEST(CAEDesc, ProcessesAndApplicationsAreLookedUp) {
    ProcessSerialNumber own;
    ASSERT_EQ(GetCurrentProcess(&own), noErr);
    FSRef place, found;
    ASSERT_EQ(GetProcessBundleLocation(&own, &place), noErr);
    CAEDesc(&own).GetFileSpec(&found);
    EXPECT_EQ(FSCompareFSRefs(&place, &found), noErr);
    EXPECT_EQ(thrown([] { descOf('sign', OSType{'no! '}).GetPSN(); }), procNotFound);
    EXPECT_EQ(thrown([&] { descOf('bund', "org.example.none").GetFileSpec(&found); }),
              kLSApplicationNotFoundErr);
}

}  // namespace
}  // namespace osa::test
