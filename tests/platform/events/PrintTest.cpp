// Descriptors as text: the notation of every kind, and nothing in it that could steer a terminal.
#include <CoreServices/AEHelpers.h>
#include <CoreServices/AEObjects.h>
#include <CoreServices/MacMemory.h>

#include "tests/platform/events/Desc.h"

namespace osa::test {
namespace {

std::string printed(const Desc& desc) {
    Handle handle = nullptr;
    EXPECT_EQ(AEPrintDescToHandle(desc, &handle), 0);
    const std::string text(*handle);
    DisposeHandle(handle);
    return text;
}

TEST(Print, WritesEveryKindOfValue) {
    const auto bytes = [](auto... values) { return (Desc::bytesOf(values) + ...); };
    const SInt16 small = -2;
    const std::tuple<DescType, std::string, const char*> cases[] = {
        {typeNull, "", "null()"},
        {typeSInt32, bytes(SInt32{-70000}), "-70000"},
        {typeSInt16, bytes(small), "'shor'(-2)"},
        {typeUInt64, bytes(~UInt64{0}), "'ucom'(18446744073709551615)"},
        {typeSInt32, "odd", "'long'($6F6464$)"},
        {typeQDPoint, bytes(small, SInt16{3}), "'QDpt'(-2, 3)"},
        {typeIEEE64BitFloatingPoint, bytes(0.1), "'doub'(0.1)"},
        {typeFixed, bytes(SInt32{0x18000}), "'fixd'(1.5)"},
        {typeBoolean, "\2", "'bool'($02$)"},
        {typeType, bytes(FourCharCode{'ID  '}), "type('ID  ')"},
        {typeEnumerated, bytes(FourCharCode{'indx'}), "indx"},
        {typeEnumerated, bytes(FourCharCode{0x27410AA9}), "'\\'A\\n\u00A9'"},
        {typeChar, "say \"\x8E\"\x1B[2J\r\\", "\"say \\\"\u00E9\\\"\\u001b[2J\\r\\\\\""},
        {typePString, "\4text", "'pstr'(\"text\")"},
        {typePString, "\5text", "'pstr'($0574657874$)"},
        {typeUnicodeText, bytes(u'\u2028', u'\xD83D', u'\xDE00', u'\xDE00'),
         "'utxt'(\"\\u2028\U0001F600\uFFFD\")"},
        {typeFileURL, "file:///\xC3\xA9\xE2\x80\xAE\xC2\x9B\xFF\xE2\x80",
         "'furl'(\"file:///\u00E9\\u202e\\u009b\uFFFD\uFFFD\uFFFD\")"},
        {'any ', "\x01\xFF", "'any '($01FF$)"},
        {typeAEList, "damaged", "'list'($64616D61676564$)"},
    };
    for (const auto& [type, data, text] : cases) EXPECT_EQ(printed(Desc(type, data)), text);
    // Too much is left out, but no half of a character shown.
    EXPECT_EQ(printed(Desc('any ', std::string(65537, 'A'))).substr(8 + 2 * 65536), "$\u2026)");
    std::string text = "xy";
    while (text.size() < 70000) text += "\u2026";
    const std::string shown = printed(Desc(typeUTF8Text, text));
    EXPECT_TRUE(shown == "'utf8'(\"" + text.substr(0, 65534) + "\"\u2026)") << shown.size();
}

TEST(Print, PutsBracketsAroundWhatIsNested) {
    Desc list = Desc::list();
    EXPECT_EQ(printed(list), "[]");
    EXPECT_EQ(printed(Desc::list(true)), "{}");
    AEPutDesc(list, 0, Desc(typeAEList, ""));
    AEPutDesc(list, 0, Desc(typeAERecord, "AEit"));
    AEPutDesc(list, 0, Desc(7));
    Desc record = Desc::list(true);
    AEPutKeyDesc(record, 'list', list);
    AEPutKeyDesc(record, 'a b ', Desc(8));
    Desc specifier;
    Desc index(1);
    CreateObjSpecifier('cwin', nullptr, formAbsolutePosition, index, false, specifier);
    Desc event;
    AECreateAppleEvent('aevt', '\?\?\?\?', nullptr, 5, 0, event);
    AEPutAttributeDesc(event, keySubjectAttr, Desc());
    AEPutParamDesc(event, keyDirectObject, specifier);
    AEPutParamDesc(event, 'args', record);
    EXPECT_EQ(printed(event),
              "aevt\\'\?\?\?\?'{ ----:obj { want:type('cwin'), form:indx, seld:1, from:null() }, "
              "args:{ list:[[], 'reco'($41456974$), 7], 'a b ':8 }, "
              "&rtid:5, &tran:0, &subj:null() }");
}

}  // namespace
}  // namespace osa::test
