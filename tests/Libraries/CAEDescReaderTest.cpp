// Every getter on every stored type at its extremes; the order of fallbacks; classification.
#include "Libraries/MacToolboxLib/CAEDesc/CAEDescReader.h"

#include <CoreServices/AEObjects.h>
#include <CoreServices/MacMemory.h>

#include <array>
#include <cstdio>

#include "tests/support/Descriptors.h"

namespace osa::test {
namespace {

std::string number(double value) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

std::string code(OSType value) {
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
            static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string numbersOf(const CAEDescReader& desc) {
    std::string all;
    const auto add = [&](auto... getters) {
        const auto one = [&](auto get) { return [&, get] { return number((desc.*get)()); }; };
        ((all += (all.empty() ? "" : " ") + outcome(one(getters))), ...);
    };
    using R = CAEDescReader;
    add(&R::GetShort, &R::GetUShort, &R::GetLong, &R::GetULong, &R::GetLongLong, &R::GetFixed,
        &R::GetDouble, &R::GetFloat);
    return all;
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Getters, NumbersAreReadOrCoercedAsTheTableSays) {
    constexpr char none[] = "E-1700 E-1700 E-1700 E-1700 E-1700 E-1700 E-1700 E-1700";
    // short, unsigned short, long, unsigned long, long long, fixed, double, float
    const std::tuple<CAEDesc, const char*> rows[] = {
        {descOf('shor', SInt16{-1}), "-1 65535 -1 4294967295 -1 -1 -1 -1"},
        {descOf('shor', SInt16{-32768}),
         "-32768 32768 -32768 4294934528 -32768 -32768 -32768 -32768"},
        {descOf('long', SInt32{70000}), "4464 4464 70000 70000 70000 70000 70000 70000"},
        {descOf('long', SInt32{-1}), "-1 65535 -1 4294967295 -1 -1 -1 -1"},
        {descOf('long', std::numeric_limits<SInt32>::min()),
         "0 0 -2147483648 2147483648 -2147483648 -2147483648 -2147483648 -2147483648"},
        {descOf('magn', UInt32{40000}), "E-1700 40000 40000 40000 40000 2147483647 40000 40000"},
        {descOf('magn', UInt32{4294967295}),
         "E-1700 65535 E-1700 4294967295 E-1700 2147483647 4294967295 4294967296"},
        {descOf('comp', SInt64{-1}), "-1 65535 -1 4294967295 -1 -65536 -1 -1"},
        {descOf('comp', SInt64{5000000000}),
         "E-1700 E-1700 E-1700 E-1700 5000000000 2147483647 5000000000 5000000000"},
        {descOf('fixd', SInt32{0x18000}), "2 2 2 2 2 98304 1.5 1.5"},
        {descOf('fixd', std::numeric_limits<SInt32>::min()),
         "-32768 32768 -32768 4294934528 -32768 -2147483648 -32768 -32768"},
        {descOf('sing', 2.25F), "2 2 2 2 2 147456 2.25 2.25"},
        {descOf('doub', 5.0), "5 5 5 5 5 327680 5 5"},
        {descOf('doub', -1.0), "-1 65535 -1 4294967295 -1 -65536 -1 -1"},
        {descOf('doub', kInfinity), "E-1700 E-1700 E-1700 E-1700 E-1700 2147483647 inf inf"},
        {descOf('bool', UInt8{1}), "1 1 1 1 1 1 1 1"},
        {descOf('TEXT', "5"), "5 5 5 5 5 327680 5 5"},
        {descOf('TEXT', "-1"), "-1 65535 -1 4294967295 -1 -65536 -1 -1"},
        {descOf('TEXT', "70000"), "E-1700 4464 70000 70000 70000 2147483647 70000 70000"},
        {descOf('utxt', std::u16string_view(u"12")[0]), "1 1 1 1 1 65536 1 1"},
        {descOf('utxt', "odd"), none},
        {descOf('TEXT', "five"), none},
        {listOf({descOf('long', SInt32{7})}), "7 7 7 7 7 458752 7 7"},
        {listOf({}), none},
        {CAEDesc(), none},
        {descOf('enum', OSType{'yes '}), none},
        {descOf('long', "ab"), "E-1702 E-1702 E-1702 E-1702 E-1702 E-1702 E-1702 E-1702"},
    };
    for (const auto& [stored, expected] : rows)
        EXPECT_EQ(numbersOf(stored), expected) << code(stored.GetType()) << " " << dataOf(stored);
}

std::string codesOf(const CAEDescReader& desc) {
    return outcome([&] { return std::string(desc.GetBool() ? "yes" : "no"); }) + " " +
           outcome([&] { return code(desc.GetEnumeration()); }) + " " +
           outcome([&] { return code(desc.GetTypeType()); }) + " " +
           outcome([&] { return code(desc.GetSignature()); }) +
           (desc.IsUndefined() ? " undefined" : "") + (desc.IsMissingValue() ? " missing" : "");
}

TEST(Getters, BooleansAndCodesAreReadOrCoercedAsTheTableSays) {
    // expected: Boolean, enumeration, type, signature
    const std::tuple<CAEDesc, const char*> rows[] = {
        {descOf('true', ""), "yes true E-1700 E-1700"},
        {descOf('fals', ""), "no fals E-1700 E-1700"},
        {descOf('bool', "\x80"), "yes true E-1700 E-1700"},
        {descOf('bool', ""), "E-1702 E-1700 E-1700 E-1700"},
        {descOf('long', SInt32{1}), "yes E-1700 E-1700 E-1700"},
        {descOf('long', SInt32{2}), "E-1700 E-1700 E-1700 E-1700"},
        {descOf('prop', OSType{'pnam'}), "E-1700 pnam pnam pnam"},
        {descOf('abso', OSType{'all '}), "E-1700 all  all  all "},
        {descOf('type', OSType{'undf'}), "E-1700 undf undf undf undefined"},
        {descOf('TEXT', "msng"), "E-1700 msng msng msng missing"},
        {descOf('sign', OSType{'ToyS'}), "E-1700 ToyS ToyS ToyS"},
    };
    for (const auto& [stored, expected] : rows) {
        EXPECT_EQ(codesOf(stored), expected) << code(stored.GetType());
    }
}

TEST(Getters, ColoursRectanglesAndPointsAreAlsoListsOfTheRightLength) {
    const auto shorts = [](std::initializer_list<SInt32> values) {
        CAEDesc list = listOf({});
        for (const SInt32 value : values) list.AppendItem(descOf('long', value));
        return list;
    };
    Rect rect{};
    shorts({10, 20, 110, 70000}).GetQDRect(&rect);
    EXPECT_EQ(rect.left, 10);
    EXPECT_EQ(rect.top, 20);
    EXPECT_EQ(rect.right, 110);
    EXPECT_EQ(rect.bottom, 4464);
    Point point{};
    shorts({3, 4}).GetQDPoint(&point);
    EXPECT_EQ(point.h, 3);
    EXPECT_EQ(point.v, 4);
    RGBColor colour{1, 2, 3};
    EXPECT_EQ(thrown([&] { shorts({1, 2, 3, 4}).GetRGBColor(&colour); }), errAECoercionFail);
    EXPECT_EQ(thrown([&] {
                  listOf({descOf('long', 9), CAEDesc(), CAEDesc()}).GetRGBColor(&colour);
              }),
              errAECoercionFail);
    EXPECT_EQ(colour.red, 1) << "a failure changes nothing";
    shorts({0xFFFF, 0, 0x8000}).GetRGBColor(&colour);
    EXPECT_EQ(colour.red, 0xFFFF);
    EXPECT_EQ(colour.blue, 0x8000);
    EXPECT_EQ(thrown([&] { descOf('qdrt', "short").GetQDRect(&rect); }), errAECorruptData);
    EXPECT_EQ(descOf('ldt ', SInt64{-5}).GetLongDateTime(), -5);
}

/// Answers coercions of type 'try ' with statuses from a list, and tells which types were asked
/// for.
struct Script {
    std::vector<OSErr> statuses;
    std::string asked;

    static OSErr coerce(DescType, const void*, Size, DescType toType, SInt32, AEDesc* result) {
        Script& script = *current;
        const std::size_t call = script.asked.size() / 5;
        script.asked += code(toType) + " ";
        const OSErr status = call < script.statuses.size() ? script.statuses[call]
                                                           : static_cast<OSErr>(errAECoercionFail);
        if (status != noErr) return status;
        const bool isText = toType == typeStyledText || toType == typeChar ||
                            toType == typeUnicodeText || toType == typeUTF8Text;
        const SInt16 one = 1;
        return isText ? AECoercePtr(typeChar, "text", 4, toType, result)
                      : AECoercePtr(typeSInt16, &one, sizeof one, toType, result);
    }
    static inline Script* current = nullptr;
};

TEST(Getters, FallBackInOrderAndOnlyOnTheStatusesTheyMay) {
    const auto handler = reinterpret_cast<AECoercionHandlerUPP>(&Script::coerce);
    ASSERT_EQ(AEInstallCoercionHandler('try ', typeWildCard, handler, 0, false, false), noErr);
    const CAEDesc tried = descOf('try ', "x");
    using R = CAEDescReader;
    const auto number = [&](auto getter) {
        return [&tried, getter] { return std::to_string((tried.*getter)()); };
    };
    const auto into = [&](auto text) {
        return [&tried, text]() mutable {
            tried.GetString(text);
            return std::string(text.begin(), text.end());
        };
    };
    const auto string = into(std::string());
    const auto units = into(TCLString());
    const auto data = [&] {
        std::string text;
        tried.GetStringData(text);
        return text;
    };
    const auto pascal = [&] {
        unsigned char text[33];
        tried.GetStr32(text);
        return std::string(reinterpret_cast<char*>(text) + 1, text[0]);
    };
    constexpr OSErr no = errAECoercionFail;
    using Row =
        std::tuple<std::function<std::string()>, std::vector<OSErr>, std::string, std::string>;
    const Row rows[] = {
        {number(&R::GetUShort), {no, no, noErr}, "magn long shor ", "1"},
        {number(&R::GetUShort), {no, no, no}, "magn long shor ", "E-1700"},
        {number(&R::GetULong), {no, noErr}, "magn long ", "1"},
        {number(&R::GetULong), {paramErr}, "magn ", "E-50"},
        {number(&R::GetULong), {no, fnfErr}, "magn long ", "E-43"},
        {number(&R::GetFixed), {no, no, no, no, noErr}, "fixd doub sing long shor ", "1"},
        {number(&R::GetFixed), {noErr}, "fixd ", "65536"},
        {number(&R::GetDouble), {no, no, no, no}, "doub sing fixd long shor ", "E-1700"},
        {number(&R::GetFloat), {no, no, noErr}, "sing doub fixd ", "1.000000"},
        {number(&R::GetLongLong), {no}, "long ", "E-1700"},
        {number(&R::GetShort), {no}, "shor ", "E-1700"},
        {number(&R::GetTypeType), {fnfErr}, "type ", "E-43"},
        {number(&R::GetSignature), {no, no}, "sign fsrf ", "E-1700"},
        {number(&R::GetSignature), {paramErr}, "sign ", "E-50"},
        {units, {paramErr, noErr}, "utxt STXT ", "text"},
        {units, {no, noErr}, "utxt STXT ", "text"},
        {units, {no, paramErr}, "utxt STXT ", "E-50"},
        {units, {fnfErr}, "utxt ", "E-43"},
        {string, {paramErr, noErr}, "TEXT STXT ", "text"},
        {string, {no}, "TEXT ", "E-1700"},
        {pascal, {paramErr, noErr}, "TEXT STXT ", "text"},
        {pascal, {no}, "TEXT ", "E-1700"},
        {data, {paramErr}, "utf8 ", "E-50"},
    };
    for (const auto& [get, statuses, asked, expected] : rows) {
        const NoLeaks leaks;
        Script script{statuses, ""};
        Script::current = &script;
        EXPECT_EQ(outcome(get), expected) << asked;
        EXPECT_EQ(script.asked, asked);
    }
    EXPECT_EQ(AERemoveCoercionHandler('try ', typeWildCard, handler, false), noErr);
}

TEST(Getters, StringsComeInEveryFormAndAreCutWhereTheyMustBe) {
    const CAEDesc text = descOf('TEXT', "caf\x8E");
    const CAEDesc units = descOf('utxt', std::u16string_view(u"\u00E9").front());
    std::string bytes;
    units.GetString(bytes);
    EXPECT_EQ(bytes, "\xC3\xA9");
    text.GetString(bytes);
    EXPECT_EQ(bytes, "caf\x8E");
    text.GetStringData(bytes);
    EXPECT_EQ(bytes, "caf\x8E") << "as it is";
    SCoreFoundation<CFStringRef> string;
    text.GetString(string);
    EXPECT_EQ(CFStringGetCharacterAtIndex(string, 3), 0xE9);
    descOf('bund', "caf\xC3\xA9").GetString(string);
    EXPECT_EQ(CFStringGetLength(string), 4);
    EXPECT_EQ(thrown([&] { descOf('furl', "\xFF").GetString(string); }), memFullErr);
    EXPECT_EQ(CFStringGetLength(string), 4) << "kept on failure";

    unsigned char pascal[5] = {9, 9, 9, 9, 9};
    text.GetPString(pascal, 3);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(pascal), 5), std::string("\3caf\x09", 5));
    char buffer[5] = {1, 1, 1, 1, 1};
    text.GetCString(buffer, 4);
    EXPECT_EQ(std::string(buffer, 5), std::string("caf\0\1", 5));
    const Ptr copy = units.CopyCString();
    EXPECT_STREQ(copy, "\x8E");
    DisposePtr(copy);
    const Handle handle = CAEDesc().CopyHandle();
    EXPECT_EQ(GetHandleSize(handle), 0);
    DisposeHandle(handle);
    EXPECT_TRUE(units.IsText());
    EXPECT_FALSE(units.IsFile());
}

TEST(Copiers, TakeTheUsualAttributesAndEveryField) {
    const auto makeEvent = [](AEReturnID returnID) {
        AEDesc made;
        FailOSErr(AECreateAppleEvent('aevt', 'odoc', nullptr, returnID, 0, &made));
        CAEDesc event(CAEDescReader{made});
        AEDisposeDesc(&made);
        return event;
    };
    CAEDesc event = makeEvent(77);
    event.SetProperty('----', descOf('TEXT', "x"));
    event.SetAttribute(keyTimeoutAttr, descOf('long', 60));
    event.SetAttribute(keySubjectAttr, CAEDesc());
    event.SetAttribute('othr', descOf('long', 1));
    EXPECT_EQ(event.GetReturnID(), 77);

    AEDesc made;
    ASSERT_EQ(AECreateList(nullptr, 0, true, &made), noErr);
    CAEDesc record(CAEDescReader{made});
    AEDisposeDesc(&made);
    event.CopyAttributesToRecord(record);
    std::string keys;
    for (SInt32 i = 1; i <= record.CountItems(); ++i) keys += code(record.GetPropertyKeyword(i));
    EXPECT_EQ(keys, "subjtimomiss");
    CAEDesc other = makeEvent(-1);
    record.CopyAttributes(other);
    CAEDesc value;
    other.GetAttribute(keyTimeoutAttr, value, 'TEXT');
    EXPECT_EQ(dataOf(value), "60");
    EXPECT_EQ(thrown([&] { other.GetAttribute(keyMissedKeywordAttr, value, '****'); }),
              errAEDescNotFound);
    event.CopyProperties(other);
    other.GetProperty('----', value, '****');
    EXPECT_EQ(dataOf(value), "x");
    CAEDesc list = listOf({value});
    list.CopyItems(list);
    EXPECT_EQ(list.CountItems(), 2);
    EXPECT_FALSE(list.EmptyList());
    EXPECT_TRUE(listOf({}).EmptyList());
}

TEST(Classification, AFileSpecifierNamesAFileAlone) {
    const std::tuple<DescType, DescType, DescType, bool, bool> rows[] = {
        {'file', 'name', 'TEXT', false, true},  {'alis', 'name', 'furl', false, true},
        {'cwin', 'name', 'TEXT', false, false}, {'file', 'indx', 'TEXT', false, false},
        {'file', 'name', 'long', false, false}, {'file', 'name', 'utxt', true, false}};
    for (const auto& [wanted, form, keyType, isContained, isFile] : rows) {
        CAEDesc container = isContained ? descOf('TEXT', "disk") : CAEDesc();
        CAEDesc key = descOf(keyType, "abcd");
        AEDesc made;
        ASSERT_EQ(CreateObjSpecifier(wanted, const_cast<AEDesc*>(&container.GetDesc()), form,
                                     const_cast<AEDesc*>(&key.GetDesc()), false, &made),
                  noErr);
        EXPECT_EQ(CAEDescReader(made).IsFile(), isFile) << code(wanted) << code(form);
        AEDisposeDesc(&made);
    }
    EXPECT_EQ(thrown([] { descOf('obj ', "no record").IsFile(); }), errAECoercionFail);
}

}  // namespace
}  // namespace osa::test
