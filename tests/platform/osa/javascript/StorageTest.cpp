// The stored form: round trips, damage, and the compiled files of the corpus.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/platform/osa/javascript/Scripting.h"

namespace osa::test {
namespace {

class Storage : public Scripting {
  protected:
    std::string stored(OSAID script, SInt32 mode) {
        Desc data;
        const OSAError status = OSAStore(js, script, typeOSAGenericStorage, mode, data.out());
        return status == noErr ? data.bytes() : failed(status);
    }
    /// The script, or 0 and the status in `status`.
    OSAID load(const std::string& bytes, OSAError* status) {
        OSAID script = kOSANullScript;
        *status = OSALoad(js, Desc(typeOSAGenericStorage, bytes), kOSAModeNull, &script);
        return script;
    }
};

TEST_F(Storage, RoundTripsWithAndWithoutSource) {
    const char source[] = "// note €\nfunction secret() { return 'réponse'; }\nsecret()";
    const OSAID script = compiled(source);
    const std::string open = stored(script, kOSAModeNull);
    EXPECT_EQ(open.substr(0, 24), "JsOsaDAS1.001.00bplist00");
    EXPECT_EQ(open.size() % 2, 0U);
    EXPECT_EQ(open.substr(open.size() - 12, 6), std::string("jscr\0\1", 6));
    OSAError status = noErr;
    OSAID back = load(open, &status);
    ASSERT_EQ(status, noErr);
    EXPECT_EQ(sourceOf(back), source);
    EXPECT_EQ(run(back), "\"réponse\"");
    EXPECT_EQ(stored(back, kOSAModeNull), open);

    const std::string closed = stored(script, kOSAModePreventGetSource);
    EXPECT_EQ(closed.find(std::string("\0s\0e\0c", 6)), std::string::npos);
    back = load(closed, &status);
    EXPECT_EQ(sourceOf(back), "E-1756");
    EXPECT_EQ(info(back, kOSACanGetSource), 0);
    EXPECT_EQ(run(back), "\"réponse\"");
    EXPECT_EQ(stored(back, kOSAModeNull), closed) << "run-only stays run-only";
    EXPECT_EQ(run("1"), "1");
    OSAID handler = kOSANullScript;
    ASSERT_EQ(OSAGetHandler(js, kOSAModeNull, back, text("secret"), &handler), noErr);
    EXPECT_EQ(sourceOf(handler), "E-1756");
    EXPECT_EQ(shown(handler), "function secret() {\n    [native code]\n}");
}

/// How a run-only file holds text.
std::string hidden(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(~(unit >> 8)));
        bytes.push_back(static_cast<char>(~unit));
    }
    return bytes;
}

TEST_F(Storage, RunOnlyIsReducedToWhatRuns) {
    struct Row {
        const char* source;
        const char16_t* kept;
    } const rows[] = {
        {"// note\nfunction f(width, {high: h = width}) { return /* a\n */ 1 }\t 'it // stays' ;",
         u"\nfunction f(v1, {high: v2 = v1}) { return\n1 } 'it // stays' ;"},
        {"var a = 6, g = 2, b = 1, r = /[/]\\/\"/; a /b/ g; x = {}/1; [/a/ /1, `${a /*c*/ + `}//`} "
         "/*`]",
         u"var a = 6, g = 2, b = 1, r = /[/]\\/\"/; a /b/ g; x = {}/1; [/a/ /1, `${a + `}//`} "
         u"/*`]"},
        {"#!/usr/bin/osa\n'use strict'; <!-- 1\n  --> 2\nvar x = 3; while (x --> 0); x - -1",
         u"\n'use strict';\n\nvar x = 3; while (x --> 0); x - -1"},
        {"(function (name, v1) { const o = {name, v1}; lab: for (;;) break lab; ({name, v1 = 2} = "
         "o);"
         " return [o.name, name, v2()]; function v2() { return arguments[0]; } })(1, 2)",
         u"(function (v1, v3) { const v4 = {name:v1, v1:v3}; lab: for (;;) break lab; ({name:v1, "
         u"v1:v3 = 2} = v4);"
         " return [v4.name, v1, v2()]; function v2() { return arguments[0]; } })(1, 2)"},
        {"try { throw 1 } catch (up) { var up = 2 } { let low = 'low'; [up, low] }",
         u"try { throw 1 } catch (up) { var up = 2 } { let v1 = 'low'; [up, v1] }"},
        {"(function (a) { const f = () => a, g = [class {}][0]; var d = f; return [f.name, g.name, "
         "d()] })(4)",
         u"(function (v1) { const f = () => v1, v2 = [class {}][0]; var v3 = f; return [f.name, "
         u"v2.name, v3()] })(4)"},
        {"(function (a) { /**/ return eval('a') })(5)", u"(function (a) { return eval('a') })(5)"},
        {"(a => String.raw`\\u /* ${ a } */`) /**/ (6)",
         u"(v1 => String.raw`\\u /* ${ v1 } */`) (6)"},
        {"k = 1; (() => { switch (k) { case 1: let k = 2, __proto__ = {}; return [k, {__proto__}] "
         "} })()",
         u"k = 1; (() => { switch (k) { case 1: let k = 2, __proto__ = {}; return [k, {__proto__}] "
         u"} })()"},
        {"'\xF0\x9F\x98\x80'; (b => { let \xF0\xA0\x80\x80 = /\xF0\x9F\x98\x80/u; return "
         "'\xF0\x9F\x98\x80' + b })(6)",
         u"'\U0001F600'; (v1 => { let v2 = /\U0001F600/u; return '\U0001F600' + v1 })(6)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.source);
        const OSAID script = compiled(row.source);
        const std::string closed = stored(script, kOSAModePreventGetSource);
        EXPECT_NE(closed.find(hidden(row.kept)), std::string::npos) << errorText();
        OSAError status = noErr;
        const OSAID back = load(closed, &status);
        EXPECT_EQ(status, noErr);
        EXPECT_EQ(run(back), run(script));
        EXPECT_EQ(stored(back, kOSAModeNull), closed) << "and no more";
    }
}

TEST_F(Storage, RunOnlyHasItsLimits) {
    std::string deep = "if (0);";
    for (int i = 0; i < 1000; ++i) deep += " else if (0);";
    const OSAID script = compiled(deep);
    EXPECT_EQ(stored(script, kOSAModePreventGetSource), "E-1753");
    EXPECT_EQ(errorText(), "InternalError: too much recursion");
    EXPECT_GT(stored(script, kOSAModeNull).size(), deep.size());
    // Neither is begun that would take more memory than there is.
    std::string large;
    for (int i = 0; i < 150'000; ++i) large += "a=1;\n";
    const OSAID dense = compiled(large);
    EXPECT_EQ(stored(dense, kOSAModePreventGetSource), "E-1750");
    EXPECT_EQ(stored(dense, kOSAModeNull).substr(0, 4), "JsOs");
    for (int i = 0; i < 3; ++i) large += large;
    OSAID refused = kOSANullScript;
    EXPECT_EQ(OSACompile(js, text(large), kOSAModeNull, &refused), errOSASystemError);
    EXPECT_EQ(run("1"), "1");
}

TEST_F(Storage, DamageIsRefused) {
    const std::string good = stored(compiled("1"), kOSAModeNull);
    std::string other = good, header = good;
    other.replace(good.size() - 12, 4, "ascr");
    header[3] = 'x';
    struct Row {
        const char* what;
        std::string bytes;
        OSAError status;
    } const rows[] = {
        {"nothing", "", errOSABadStorageType},
        {"no trailer", good.substr(0, good.size() - 1), errOSABadStorageType},
        {"another language", other, errOSABadStorageType},
        {"header", header, errOSACorruptData},
        {"list cut", good.substr(0, 30) + good.substr(good.size() - 12), errOSACorruptData},
        {"trailer alone", good.substr(good.size() - 12), errOSACorruptData},
    };
    for (const Row& row : rows) {
        OSAError status = noErr;
        EXPECT_EQ(load(row.bytes, &status), OSAID{kOSANullScript}) << row.what;
        EXPECT_EQ(status, row.status) << row.what;
    }
    EXPECT_EQ(stored(valueOf("1"), kOSAModeNull), "E-1751");
}

TEST_F(Storage, CorpusFilesGiveTheirSource) {
    const char* const corpus = std::getenv("OSA_CORPUS");
    if (corpus == nullptr || *corpus == '\0') GTEST_SKIP() << "SKIPPED: OSA_CORPUS is not set";
    int loaded = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        if (!bytes.starts_with("JsOsaDAS")) continue;
        OSAError status = noErr;
        const OSAID script = load(bytes, &status);
        EXPECT_EQ(status, noErr) << entry.path() << errorText();
        EXPECT_GT(sourceOf(script).size(), 8U) << entry.path();
        ++loaded;
    }
    EXPECT_GT(loaded, 0);
}

}  // namespace
}  // namespace osa::test
