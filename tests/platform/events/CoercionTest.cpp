// The manager's own coercions, as pairs of data; and who is asked before them.
#include <CoreServices/AEObjects.h>
#include <CoreServices/FixMath.h>
#include <CoreServices/Processes.h>

#include <cmath>
#include <limits>

#include "tests/platform/events/Desc.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

using std::string_literals::operator""s;

template <typename T>
std::string of(T value) {
    return Desc::bytesOf(value);
}
std::string utxt(std::u16string_view units) {
    return std::string(reinterpret_cast<const char*>(units.data()), units.size() * 2);
}
std::string code(DescType value) {
    return of<DescType>(value);
}

/// What a coercion gives: a status, or the type and data of a result.
struct Outcome {
    OSErr status;
    DescType type;
    std::string data;
    bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << outcome.status << " type " << std::hex << outcome.type << " data "
               << ::testing::PrintToString(outcome.data);
}

Outcome coerce(const AEDesc* from, DescType to) {
    Desc result;
    AEDesc* const target = result;
    target->descriptorType = 'junk';
    const OSErr status = AECoerceDesc(from, to, result);
    return {status, result->descriptorType, result.data()};
}

const Outcome kFails = {errAECoercionFail, typeNull, ""};

/// Type and data, the type asked for, and the data that comes.
using Case = std::tuple<DescType, std::string, DescType, std::string>;
/// Marks a case that must fail.
const std::string kFail = "(fails)";

/// Every case from a descriptor and from a pointer, alone and as the only item of a list.
void check(const std::vector<Case>& cases) {
    const NoLeaks leaks;
    for (const auto& [type, data, to, wanted] : cases) {
        SCOPED_TRACE(code(to) + " of " + ::testing::PrintToString(data));
        const Outcome expected = wanted == kFail ? kFails : Outcome{noErr, to, wanted};
        const Desc from(type, data);
        EXPECT_EQ(coerce(from, to), expected);
        Desc result;
        EXPECT_EQ(AECoercePtr(type, data.data(), static_cast<Size>(data.size()), to, result),
                  expected.status);
        EXPECT_EQ(result.data(), expected.data);
        EXPECT_EQ(coerce(Desc::list(), to), kFails);
        Desc list = Desc::list();
        AEPutDesc(list, 0, from);
        EXPECT_EQ(coerce(list, to), expected);
        AEPutDesc(list, 0, from);
        EXPECT_EQ(coerce(list, to), kFails) << "two items";
    }
}

// clang-format off
TEST(Coercion, Text) {
    const std::string eAcute = utxt(u"\u00E9");
    check({
        {'TEXT', "caf\x8E", 'utxt', utxt(u"caf\u00E9")},
        {'utxt', utxt(u"\u00E9\u65E5\U0001F600"), 'TEXT', "\x8E??"},
        {'utxt', utxt(u"\uFEFFa"), 'utf8', "\xEF\xBB\xBF"s + "a"},
        {'utxt', utxt(u"\xD800x"), 'utf8', "?x"}, {'utf8', "\xEF\xBB\xBF\xC3\xA9", 'utxt', eAcute},
        {'utf8', "\xC0\xAF", 'utxt', kFail}, {'utf8', "\xED\xA0\x80", 'TEXT', kFail},
        {'ut16', "\0\xE9"s, 'utxt', eAcute}, {'ut16', "\xFF\xFE\xE9\0"s, 'utxt', eAcute},
        {'TEXT', "a", 'ut16', "\xFE\xFF\0a"s}, {'itxt', of<SInt32>(0) + "\x8E", 'utxt', eAcute},
        {'itxt', of<SInt16>(7) + of<SInt16>(32) + "\xEF", 'utxt', utxt(u"\u043F")},
        {'itxt', of<SInt16>(-1) + of<SInt16>(0) + "\x8E", 'utxt', eAcute},
        {'itxt', "abc", 'TEXT', kFail}, {'utxt', eAcute, 'itxt', of<SInt32>(0) + "\x8E"},
        {'cstr', "a\0b"s, 'TEXT', "a"}, {'cstr', "unended", 'TEXT', "unended"},
        {'TEXT', "a\0b"s, 'cstr', "a\0"s}, {'pstr', "\2abc", 'TEXT', "ab"},
        {'pstr', "\4abc", 'TEXT', kFail},
        {'TEXT', std::string(255, 'x'), 'pstr', "\xFF" + std::string(255, 'x')},
        {'TEXT', std::string(256, 'x'), 'pstr', kFail}, {'STXT', "no record", 'TEXT', "no record"},
        {'furl', "file:///a%20b", 'utxt', utxt(u"file:///a%20b")},
        {'TEXT', "file:///a", 'furl', kFail}, {'utxt', eAcute, 'bund', "\xC3\xA9"},
    });
}

TEST(Coercion, NumbersByValue) {
    constexpr SInt64 kMost = std::numeric_limits<SInt64>::max();
    constexpr SInt64 kLeast = std::numeric_limits<SInt64>::min();
    constexpr UInt64 kAll = std::numeric_limits<UInt64>::max();
    constexpr double kHuge = std::numeric_limits<double>::max();
    check({
        {'ushr', of<UInt16>(65535), 'long', of<SInt32>(65535)},
        {'ushr', of<UInt16>(32768), 'shor', kFail},
        {'long', of<SInt32>(5), 'fixd', of<Fixed>(0x50000)}, {'long', of<SInt16>(5), 'comp', kFail},
        {'fixd', of<Fixed>(-0x28000), 'shor', of<SInt16>(-3)},
        {'comp', of(kMost), 'ucom', of<UInt64>(kMost)}, {'ucom', of(kAll), 'comp', kFail},
        {'doub', of(18446744073709551616.0), 'ucom', kFail},
        {'doub', of(0.49999999999999994), 'long', of<SInt32>(0)}, {'doub', of(-0.5), 'ushr', kFail},
        {'doub', of(65535.5), 'ushr', kFail}, {'doub', of(0.1), 'sing', of(0.1F)},
        {'doub', of(kHuge), 'sing', kFail}, {'doub', of(1e-300), 'sing', of(0.0F)},
        {'doub', of(std::nan("")), 'long', kFail},
        {'comp', of(kLeast), 'TEXT', "-9223372036854775808"},
        {'ucom', of(kAll), 'utxt', utxt(u"18446744073709551615")}, {'doub', of(0.1), 'TEXT', "0.1"},
        {'doub', of(5.0), 'TEXT', "5"}, {'doub', of(-INFINITY), 'TEXT', kFail},
        {'sing', of(0.1F), 'TEXT', "0.1"}, {'fixd', of<Fixed>(0x18000), 'TEXT', "1.5"},
        {'TEXT', "\t +17\r\n", 'shor', of<SInt16>(17)},
        {'TEXT', "9223372036854775807.49", 'comp', of(kMost)},
        {'TEXT', "9223372036854775807.5", 'comp', kFail},
        {'TEXT', "18446744073709551616", 'ucom', kFail}, {'TEXT', "1e3", 'long', of<SInt32>(1000)},
        {'TEXT', "-2.5", 'long', of<SInt32>(-3)}, {'TEXT', "0.0499e1", 'long', of<SInt32>(0)},
        {'TEXT', "0e99999999999999999999", 'long', of<SInt32>(0)},
        {'TEXT', "1e99999999999999999999", 'long', kFail},
        {'TEXT', "1e-99999999999999999999", 'doub', of(0.0)},
        {'TEXT', "1.7976931348623157e308", 'doub', of(kHuge)}, {'TEXT', "1e309", 'doub', kFail},
        {'TEXT', "1" + std::string(400, '0') + "e-400", 'sing', of(1.0F)},
        {'TEXT', " ", 'long', kFail}, {'TEXT', ".", 'doub', kFail}, {'TEXT', "1e", 'doub', kFail},
        {'TEXT', "1.2.3", 'doub', kFail}, {'TEXT', "0x10", 'long', kFail},
        {'TEXT', "nan", 'doub', kFail}, {'TEXT', "+-1", 'long', kFail},
        {'utxt', utxt(u"\u0661"), 'long', kFail},
    });
    EXPECT_EQ(X2Fix(1e9), 0x7FFFFFFF);
    EXPECT_EQ(X2Fix(-1e9), std::numeric_limits<Fixed>::min());
    EXPECT_EQ(X2Fix(std::nan("")), 0);
    EXPECT_EQ(X2Fix(-1.5 / 65536), -2);
    EXPECT_EQ(Fix2X(-0x18000), -1.5);
}

TEST(Coercion, TruthAndCodes) {
    check({
        {'bool', "\2", 'comp', of<SInt64>(1)}, {'long', of<SInt32>(1), 'bool', "\1"},
        {'long', of<SInt32>(2), 'bool', kFail}, {'doub', of(1.0), 'bool', kFail},
        {'true', "", 'ushr', of<UInt16>(1)}, {'fals', "", 'bool', "\0"s},
        {'bool', "\0"s, 'fals', ""}, {'bool', "\0"s, 'true', kFail},
        {'enum', code('true'), 'bool', "\1"}, {'enum', code('yes '), 'bool', kFail},
        {'bool', "\0"s, 'enum', code('fals')}, {'bool', "\1", 'utf8', "true"},
        {'TEXT', "FaLSe", 'bool', "\0"s}, {'TEXT', "truth", 'bool', kFail},
        {'type', code('abcd'), 'sign', code('abcd')}, {'type', "abc", 'enum', kFail},
        {'TEXT', "undf", 'type', code(cUndefined)}, {'utxt', utxt(u"caf\u65E5"), 'type', kFail},
        {'enum', code(0x6361668E), 'utf8', "caf\xC3\xA9"}, {'type', code('abcd'), 'long', kFail},
        {'abcd', "data", 'TEXT', kFail},
    });
}
// clang-format on

TEST(Coercion, StyledTextIsARecordOfPlainText) {
    Desc styled;
    const Desc text(typeUTF8Text, "caf\xC3\xA9");
    ASSERT_EQ(AECoerceDesc(text, typeStyledText, styled), noErr);
    EXPECT_EQ(styled.item(1).data(), "caf\x8E");
    EXPECT_EQ(styled.item(2).data(), of<UInt16>(0));
    EXPECT_EQ(styled.item(2)->descriptorType, static_cast<DescType>('styl'));
    Desc unicode;
    ASSERT_EQ(AECoerceDesc(styled, typeStyledUnicodeText, unicode), noErr);
    EXPECT_EQ(coerce(unicode, typeUnicodeText).data, utxt(u"caf\u00E9"));
    EXPECT_EQ(AEPutKeyDesc(unicode, keyAEText, styled), noErr);
    EXPECT_EQ(coerce(unicode, typeUnicodeText), kFails) << "styled text in styled text";
    EXPECT_EQ(AEDeleteKeyDesc(styled, keyAEText), noErr);
    EXPECT_EQ(coerce(styled, typeChar), kFails);
}

TEST(Coercion, ListsOfNumbersAreShapesWhenTheirCountIsRight) {
    Desc numbers = Desc::list();
    for (const char* const number : {"1", "2", "3", "4"}) {
        AEPutPtr(numbers, 0, typeChar, number, 1);
        EXPECT_EQ(coerce(numbers, typeQDPoint).status == noErr, *number == '2');
        EXPECT_EQ(coerce(numbers, typeRGBColor).status == noErr, *number == '3');
    }
    const Rect rectangle = {2, 1, 4, 3};  // top, left, bottom, right
    EXPECT_EQ(coerce(numbers, typeQDRectangle).data, of(rectangle));
    Desc list;
    ASSERT_EQ(AECoerceDesc(Desc(typeQDPoint, of(Point{7, 8})), typeAEList, list), noErr);
    EXPECT_EQ(list.item(1).data(), of<SInt16>(8)) << "horizontal first";
    EXPECT_EQ(coerce(list, typeQDPoint).data, of(Point{7, 8}));
    AEPutPtr(list, 1, typeSInt32, of<SInt32>(40000).data(), 4);
    EXPECT_EQ(coerce(list, typeQDPoint), kFails);
    EXPECT_EQ(coerce(Desc(typeQDRectangle, "short"), typeAEList), kFails);
}

TEST(Coercion, RecordsChangeTheirTypeAndEventsGiveTheirParameters) {
    Desc record = Desc::list(true);
    AEPutKeyDesc(record, keyAEText, Desc(typeChar, "text"));
    for (const DescType type : {'obj ', 'STXT', 'sutx', 'MINE'}) {
        EXPECT_EQ(coerce(record, type), (Outcome{noErr, type, record.data()}));
        EXPECT_EQ(coerce(Desc(type, record.data()), typeAERecord).status, noErr);
    }
    for (const DescType type : {'TEXT', 'aevt', 'null', 'best', 'long', 'fsrf', 'psn '})
        EXPECT_EQ(coerce(record, type), kFails) << type;
    EXPECT_EQ(coerce(Desc(typeChar, "text"), typeAERecord), kFails);
    EXPECT_EQ(coerce(Desc(typeAEList, "damaged"), typeChar).status, errAECorruptData);
    Desc event;
    ASSERT_EQ(AECreateAppleEvent('aevt', 'oapp', nullptr, 1, 0, event), noErr);
    AEPutParamDesc(event, keyDirectObject, record);
    Desc parameters;
    ASSERT_EQ(AECoerceDesc(event, typeAERecord, parameters), noErr);
    EXPECT_EQ(AESizeOfKeyDesc(parameters, keyDirectObject, nullptr, nullptr), noErr);
    EXPECT_EQ(parameters.item(parameters.count()).data(), record.data());
    EXPECT_EQ(AESizeOfAttribute(event, keyMissedKeywordAttr, nullptr, nullptr), noErr)
        << "being coerced is not being read";
    EXPECT_EQ(coerce(record, typeAEList).status, noErr);
}

TEST(Coercion, FilesByReferenceSpecAliasAndURL) {
    const TemporaryFolder folder;
    const NoLeaks leaks;
    const std::string path = folder.write("50% caf\xC3\xA9 #1", "");
    const FSRef ref = refOf(path);
    const Desc reference(typeFSRef, of(ref));
    std::vector<Desc> forms;
    for (const DescType type : {typeFSRef, typeFSS, typeAlias, typeFileURL}) {
        AECoerceDesc(reference, type, forms.emplace_back());
    }
    for (const Desc& from : forms) {
        for (const Desc& to : forms) {
            Desc there;
            ASSERT_EQ(AECoerceDesc(from, to->descriptorType, there), noErr);
            EXPECT_EQ(coerce(there, typeFSRef).data, of(ref));
        }
        const bool isURL = from->descriptorType == typeFileURL;
        EXPECT_TRUE(
            coerce(from, typeUTF8Text)
                .data.ends_with(isURL ? "/50%25%20caf%C3%A9%20%231" : ":50% caf\xC3\xA9 #1"));
    }
    const auto at = [](const std::string& path) { return Desc(typeFSRef, of(refOf(path))); };
    EXPECT_TRUE(coerce(at("/tmp"), typeChar).data.ends_with(":tmp:"));
    const std::string root = coerce(at("/"), typeChar).data;
    EXPECT_EQ(root.find(':'), root.size() - 1);
    EXPECT_EQ(coerce(reference, typeApplSignature), kFails);
    folder.write("P.app/Contents/PkgInfo", "APPLsign");
    EXPECT_EQ(coerce(at(folder.path("P.app")), typeApplSignature).data, code('sign'));
    std::string spec = forms[1].data();
    spec[offsetof(FSSpec, name)] = '\xC8';
    EXPECT_EQ(coerce(Desc(typeFSS, spec), typeFSRef), kFails) << "longer than its field";
    fs::remove(path);
    for (const Desc& from : forms) {
        const DescType to = from->descriptorType == typeAlias ? typeFSS : typeAlias;
        EXPECT_EQ(coerce(from, to).status, fnfErr);
        EXPECT_EQ(coerce(Desc(from->descriptorType, ""), to), kFails);
    }
}

TEST(Coercion, ProcessesThatRunAndThatDoNot) {
    const Desc own(typeProcessSerialNumber, of(ProcessSerialNumber{0, kCurrentProcess}));
    const Desc nobody(typeProcessSerialNumber, of(ProcessSerialNumber{99, 99}));
    for (const DescType type : {typeApplSignature, typeApplicationBundleID}) {
        EXPECT_EQ(coerce(own, type), kFails) << "the test program lies in no bundle";
        EXPECT_EQ(coerce(nobody, type).status, procNotFound);
        EXPECT_EQ(coerce(Desc(type, "MINE"), typeProcessSerialNumber).status, procNotFound);
    }
}

TEST(Coercion, SurvivesAnyBytesAndNoMemory) {
    constexpr DescType kTypes[] = {
        'null', 'bool', 'true', 'shor', 'ucom', 'sing', 'doub', 'fixd', 'TEXT', 'cstr', 'pstr',
        'STXT', 'itxt', 'utf8', 'utxt', 'ut16', 'sutx', 'type', 'enum', 'alis', 'fsrf', 'fss ',
        'furl', 'cRGB', 'qdrt', 'list', 'reco', 'aevt', 'psn ', 'sign', 'bund', 'obj ', 'MINE'};
    const NoLeaks leaks;
    UInt32 random = 1;
    std::string bytes;
    for (const std::size_t size : {0, 1, 2, 4, 6, 8, 70, 80, 200}) {
        while (bytes.size() < size) bytes += static_cast<char>((random = random * 69069 + 1) >> 24);
        for (const DescType from : kTypes) {
            const Desc desc(from, size == 6 ? "-1.5e2"s : bytes);
            for (const DescType to : kTypes) {
                for (const UInt32 failing : {0, 1, 2, 4}) {
                    Desc result;
                    OSAFailOperation(failing, 1);
                    const OSErr status = AECoerceDesc(desc, to, result);
                    OSAFailOperation(0, 0);
                    EXPECT_TRUE(status == noErr || result->dataHandle == nullptr);
                }
            }
        }
    }
}

/// Handlers that note who was asked, by their refcon.
std::vector<SInt32> asked;
OSErr answer = noErr;

OSErr answerOf(SInt32 refcon) {
    asked.push_back(refcon);
    return answer;
}

OSErr ptrHandler(DescType, const void* data, Size size, DescType, SInt32 refcon, AEDesc* result) {
    const OSErr status = answerOf(refcon);
    return status != noErr ? status : AECreateDesc('MINE', data, size, result);
}

OSErr descHandler(const AEDesc* from, DescType, SInt32 refcon, AEDesc* result) {
    const OSErr status = answerOf(refcon);
    return status != noErr ? status : AECreateDesc('mine', *from->dataHandle, 2, result);
}

/// Sends 'cirA' to 'cirB' and back, for ever.
OSErr circleHandler(const AEDesc* from, DescType to, SInt32, AEDesc* result) {
    asked.push_back(0);
    const DescType other = to == 'cirA' ? 'cirB' : 'cirA';
    const AEDesc copy = {to, from->dataHandle};
    return AECoerceDesc(&copy, other, result);
}

template <typename Handler>
AECoercionHandlerUPP asUPP(Handler* handler) {
    return reinterpret_cast<AECoercionHandlerUPP>(handler);
}

/// Puts another handler in its own place.
OSErr replacingHandler(DescType from, const void*, Size, DescType to, SInt32, AEDesc*) {
    EXPECT_EQ(AEInstallCoercionHandler(from, to, asUPP(ptrHandler), 7, 0, 0), noErr);
    return userCanceledErr;
}

TEST(CoercionHandlers, AreAskedInOrderUntilOneAnswers) {
    const CFIndex blocks = OSALiveBlockCount();
    constexpr DescType kAny = typeWildCard;
    struct Installed {
        DescType from, to;
        bool isSystem, isDesc;
    };
    const std::vector<Installed> handlers = {
        {typeChar, 'dest', false, true}, {typeChar, kAny, false, false},
        {kAny, 'dest', false, true},     {kAny, kAny, false, false},
        {typeChar, 'dest', true, false}, {typeChar, kAny, true, true},
        {kAny, 'dest', true, false},     {kAny, kAny, true, true},
    };
    const auto procedureOf = [](const Installed& each) {
        return each.isDesc ? asUPP(descHandler) : asUPP(ptrHandler);
    };
    for (SInt32 number = 0; const Installed& each : handlers)
        AEInstallCoercionHandler(each.from, each.to, procedureOf(each), number++, each.isDesc,
                                 each.isSystem);
    AECoercionHandlerUPP found = nullptr;
    SInt32 refcon = -1;
    Boolean isDesc = 0;
    EXPECT_EQ(AEGetCoercionHandler(typeChar, kAny, &found, &refcon, &isDesc, 1), noErr);
    EXPECT_EQ(found, procedureOf(handlers[5]));
    EXPECT_EQ(refcon, 5);
    EXPECT_EQ(isDesc, 1);
    answer = errAECoercionFail;
    const Desc text(typeChar, "17");
    EXPECT_EQ(coerce(text, 'dest'), kFails);
    EXPECT_EQ(asked, (std::vector<SInt32>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(coerce(text, typeSInt16), (Outcome{noErr, typeSInt16, of<SInt16>(17)}));
    asked.clear();
    EXPECT_EQ(coerce(text, typeChar).status, noErr);
    EXPECT_EQ(coerce(text, typeWildCard).status, noErr);
    EXPECT_TRUE(asked.empty()) << "a duplicate is nobody's business";
    answer = fnfErr;
    EXPECT_EQ(coerce(text, typeSInt16), (Outcome{fnfErr, typeNull, ""}));
    EXPECT_EQ(asked, (std::vector<SInt32>{1}));
    answer = noErr;
    // With the first handler gone the next one answers, in the other shape.
    for (std::size_t i = 0; i < handlers.size(); ++i) {
        const Installed& each = handlers[i];
        const DescType type = each.isDesc ? 'mine' : 'MINE';
        EXPECT_EQ(coerce(text, 'dest'), (Outcome{noErr, type, "17"}));
        Desc result;
        EXPECT_EQ(AECoercePtr(typeChar, "18", 2, 'dest', result), noErr);
        EXPECT_EQ(result.data(), "18");
        const auto remove = [&](AECoercionHandlerUPP which) {
            return AERemoveCoercionHandler(each.from, each.to, which, each.isSystem);
        };
        EXPECT_EQ(remove(asUPP(circleHandler)), errAEHandlerNotFound);
        EXPECT_EQ(remove(i % 2 == 0 ? procedureOf(each) : nullptr), noErr);
        EXPECT_EQ(remove(nullptr), errAEHandlerNotFound);
    }
    EXPECT_EQ(coerce(text, 'dest'), kFails);
    EXPECT_EQ(OSALiveBlockCount(), blocks + 1);
}

TEST(CoercionHandlers, GoNeitherInCirclesNorHoldUpOthers) {
    AEInstallCoercionHandler('cirA', 'cirB', asUPP(circleHandler), 0, 1, 0);
    AEInstallCoercionHandler('cirB', 'cirA', asUPP(circleHandler), 0, 1, 0);
    AEInstallCoercionHandler(typeWildCard, typeWildCard, asUPP(circleHandler), 0, 1, 1);
    asked.clear();
    EXPECT_EQ(coerce(Desc('cirA', "x"), 'cirB'), kFails);
    EXPECT_EQ(asked.size(), 32U) << "once a level, though each level has two handlers";
    AERemoveCoercionHandler('cirA', 'cirB', nullptr, 0);
    AERemoveCoercionHandler('cirB', 'cirA', nullptr, 0);
    AERemoveCoercionHandler(typeWildCard, typeWildCard, nullptr, 1);
    AEInstallCoercionHandler('here', 'ther', asUPP(replacingHandler), 0, 0, 0);
    EXPECT_EQ(coerce(Desc('here', "x"), 'ther').status, userCanceledErr);
    EXPECT_EQ(coerce(Desc('here', "x"), 'ther').type, static_cast<DescType>('MINE'));
    EXPECT_EQ(asked.back(), 7);
    AERemoveCoercionHandler('here', 'ther', nullptr, 0);
}

}  // namespace
}  // namespace osa::test
