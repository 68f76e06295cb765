// Values: displayed, as descriptors, and back.
#include "tests/platform/osa/javascript/Scripting.h"

namespace osa::test {
namespace {

/// A million values take their time where memory is watched.
class Values : public Scripting {
  protected:
    void SetUp() override {
        OSAGetLimits(&before_);
        const OSALimits limits{0, before_.memoryBytes};
        OSASetLimits(&limits);
        open();
    }
    void TearDown() override {
        Scripting::TearDown();
        OSASetLimits(&before_);
    }

  private:
    OSALimits before_{};
};

TEST_F(Values, AreDisplayedAndBecomeDescriptors) {
    struct Row {
        const char *source, *display, *human, *descriptor;
    } const rows[] = {
        {"'a\"b'", R"("a\"b")", "a\"b", R"('utxt'("a\"b"))"},
        {"3 + 4", "7", "7", "7"},
        {"-0", "-0", "-0", "'doub'(-0)"},
        {"2147483648", "2147483648", "2147483648", "'doub'(2147483648)"},
        {"1.5", "1.5", "1.5", "'doub'(1.5)"},
        {"1n << 60n", "1152921504606846976n", "1152921504606846976", "'comp'(1152921504606846976)"},
        {"1n << 70n", "1180591620717411303424n", "1180591620717411303424", "E-1700"},
        {"true", "true", "true", "'true'()"},
        {"null", "null", "null", "type('msng')"},
        {"[undefined][0]; var r = [undefined]; r", "[undefined]", "[undefined]", "[type('undf')]"},
        {"[1,['a']]", R"([1,["a"]])", "[1, [a]]", "[1, ['utxt'(\"a\")]]"},
        {"({name: 1, other: 2, 7: 3})", R"({"7":3,"name":1,"other":2})",
         "{7: 3, name: 1, other: 2}", R"({ name:1, usrf:['utxt'("7"), 3, 'utxt'("other"), 2] })"},
        {"new Uint8Array([1, 255])", "new Uint8Array([1,255])", "[1, 255]", "'rdat'($01FF$)"},
        {"new Date(2001, 1, 3, 4, 5, 6)", "", "", "'ldt '(3064017906)"},
        {"new String('boxed')", "\"boxed\"", "boxed", "'utxt'(\"boxed\")"},
        {"(function f() { return 1; })", "function f() { return 1; }", "function f() { return 1; }",
         "E-1700"},
        {"/a+/g", "/a+/g", "/a+/g", "E-1700"},
        {"new Map([[1, 'a']])", "new Map([[1,\"a\"]])", "[[1, a]]", "E-1700"},
        {"var a = []; a.push(a); a", "E-1753", "[\u2026]", "E-1700"},
        {"({length: 2 ** 31 - 1, [Symbol.toStringTag]: 'ArrayBuffer'})", "{\"length\":2147483647}",
         "{length: 2147483647}", "{ usrf:['utxt'(\"length\"), 2147483647] }"},
        {"({[Symbol.toStringTag]: 'Map'})", "{}", "{}", "{}"},
        {"new Proxy([1], {})", R"({"0":1})", "{0: 1}", "E-1700"},
        {"var b = [1, 2]; b[Symbol.iterator] = null; b", "[1,2]", "[1, 2]", "[1, 2]"},
        {"[Object(3n), new Set([1]), Object(Symbol('s')), new Date(NaN), new "
         "Uint8Array([7]).buffer]",
         "[3n,new Set([1]),Symbol(s),new Date(NaN),new Uint8Array([7]).buffer]",
         "[3, [1], Symbol(s), Invalid Date, [7]]", "E-1700"},
        {"({get x() { throw new Error('no'); }})", "E-1753", "E-1753", "E-1753"},
        {"({toString() { throw 1; }})", "", "E-1753", "E-1700"},
        {"var d = []; for (var i = 0; i < 80; ++i) d = [d, d]; d", "", "", "E-1700"},
        {"var u = {}; for (var i = 0; i < 100; ++i) u = {deep: u}; u", "", "", "E-1700"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.source);
        const OSAID value = valueOf(row.source);
        if (*row.display != 0) {
            EXPECT_EQ(shown(value), row.display);
        }
        if (*row.human != 0) {
            EXPECT_EQ(shown(value, kOSAModeDisplayForHumans), row.human);
        }
        EXPECT_EQ(printed(value), row.descriptor);
        Desc desc;
        if (OSACoerceToDesc(js, value, typeBest, kOSAModeNull, desc.out()) == noErr) {
            EXPECT_EQ(static_cast<DescType>(info(value, kOSAScriptBestType)),
                      desc.desc.descriptorType);
            OSAID back = kOSANullScript;
            EXPECT_EQ(OSACoerceFromDesc(js, desc, kOSAModeNull, &back), noErr);
            EXPECT_EQ(printed(back), row.descriptor);
            // The order of fields may be another: keywords come first.
            EXPECT_EQ(shown(back).size(), shown(value).size());
        }
        EXPECT_EQ(OSADispose(js, value), noErr);
        EXPECT_EQ(OSADispose(js, value), errOSAInvalidID);
    }
}

TEST_F(Values, OfTheGreatestDepthAndManyFieldsComeBack) {
    for (const char* const source :
         {"var u = {}; for (var i = 0; i < 99; ++i) u = {deeper: u}; u",
          "var u = {}; for (var i = 1000; i < 100000; ++i) u['_' + i.toString(36)] = i; u"}) {
        SCOPED_TRACE(source);
        const OSAID value = valueOf(source);
        Desc desc;
        ASSERT_EQ(OSACoerceToDesc(js, value, typeWildCard, kOSAModeNull, desc.out()), noErr);
        OSAID back = kOSANullScript;
        ASSERT_EQ(OSACoerceFromDesc(js, desc, kOSAModeNull, &back), noErr);
        EXPECT_EQ(shown(back).size(), shown(value).size());
    }
}

TEST_F(Values, ComeFromDescriptors) {
    const char file[] = "furlfile:///usr", gone[] = "furlfile:///no/such";
    struct Row {
        DescType type;
        std::string bytes;
        const char *display, *best;
    } const rows[] = {
        {typeChar, "caf\x8E", "\"café\"", "utxt"},
        {typeNull, "", "null", "type"},
        {typeBoolean, std::string(1, '\1'), "true", "true"},
        {typeSInt16, std::string("\xFE\xFF", 2), "-2", "long"},
        {typeUInt64, std::string(8, '\xFF'), "18446744073709551615n", "comp"},
        {typeFileURL, file + 4, "\"/usr\"", "furl"},
        {typeFileURL, gone + 4, "\"'furl'(\\\"file:///no/such\\\")\"", "furl"},
        {'abcd', "xy", "\"'abcd'($7879$)\"", "abcd"},
        {typeType, "cod", "E-1700", ""},
        {typeAEList, "damaged", "E-1702", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.display);
        const Desc desc(row.type, row.bytes);
        OSAID value = kOSANullScript;
        const OSAError status = OSACoerceFromDesc(js, desc, kOSAModeNull, &value);
        ASSERT_EQ(status == noErr ? shown(value) : failed(status), row.display);
        if (status != noErr) continue;
        const UInt32 best = static_cast<UInt32>(info(value, kOSAScriptBestType));
        const char code[] = {char(best >> 24), char(best >> 16), char(best >> 8), char(best)};
        EXPECT_EQ(std::string(code, 4), row.best);
    }
}

TEST_F(Values, OfOneInstanceAreNotAnothers) {
    const OSAID mine = valueOf("1");
    ComponentInstance other = OpenDefaultComponent(kOSAComponentType, 'jscr');
    EXPECT_EQ(OSADispose(other, mine), errOSAInvalidID);
    EXPECT_EQ(CloseComponent(other), noErr);
    OSAID copy = kOSANullScript;
    EXPECT_EQ(OSACopyID(js, mine, &copy), noErr);
    EXPECT_EQ(OSADispose(js, mine), noErr);
    EXPECT_EQ(shown(copy), "1");
}

}  // namespace
}  // namespace osa::test
