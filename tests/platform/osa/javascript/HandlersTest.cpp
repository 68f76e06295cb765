// Running, handlers, events, properties, and errors.
#include "tests/platform/osa/javascript/Scripting.h"

namespace osa::test {
namespace {

class Handlers : public Scripting {
  protected:
    /// The value that an event gives; `codes` are class and ID, `direct` goes under '----'.
    std::string send(OSAID script, std::string_view codes, std::string_view name = "",
                     const AEDesc* direct = nullptr) {
        const auto code = [&](std::size_t at) {
            return UInt32(UInt8(codes[at])) << 24 | UInt32(UInt8(codes[at + 1])) << 16 |
                   UInt32(UInt8(codes[at + 2])) << 8 | UInt8(codes[at + 3]);
        };
        Desc event;
        AECreateAppleEvent(code(0), code(4), nullptr, kAutoGenerateReturnID, kAnyTransactionID,
                           event.out());
        if (!name.empty()) AEPutParamDesc(event.out(), keyASSubroutineName, text(name));
        if (direct != nullptr) AEPutParamDesc(event.out(), keyDirectObject, direct);
        const SInt32 extra = 7;
        if (name.empty()) AEPutParamPtr(event.out(), 'xtra', typeSInt32, &extra, sizeof extra);
        OSAID value = kOSANullScript;
        const OSAError status = OSAExecuteEvent(js, event, script, kOSAModeNull, &value);
        return status == noErr ? shown(value) : failed(status);
    }
    std::string handler(OSAID script, const Desc& name) {
        OSAID found = kOSANullScript;
        const OSAError status = OSAGetHandler(js, kOSAModeNull, script, name, &found);
        return status == noErr ? sourceOf(found) : failed(status);
    }
    std::string property(OSAID script, std::string_view name) {
        OSAID found = kOSANullScript;
        const OSAError status = OSAGetProperty(js, kOSAModeNull, script, text(name), &found);
        return status == noErr ? shown(found) : failed(status);
    }
};

TEST_F(Handlers, AreFoundByNameAndEvent) {
    const OSAID script = compiled(
        "var plain = 1; let declared = [2]; const f = () => declared.length;\n"
        "function add(a, b) { return a + b; } globalThis['odd name'] = 'x';\n"
        "function openDocuments(d, o) { return [d, o.xtra]; }\n"
        "on('miscslct', function (d) { return 'on ' + d; }); on.testtest = () => 1;\n"
        "var unset; throwing = 1;");
    Desc list;
    AECreateList(nullptr, 0, false, list.out());
    for (const SInt32 number : {3, 4}) AEPutPtr(list.out(), 0, typeSInt32, &number, 4);
    EXPECT_EQ(send(script, "ascrpsbr", "add", list), "7");
    EXPECT_EQ(send(script, "ascrpsbr", "add"), "NaN");
    EXPECT_EQ(send(script, "ascrpsbr", "f"), "1");
    EXPECT_EQ(send(script, "ascrpsbr", "parseInt"), "E-1708");
    EXPECT_EQ(send(script, "aevtodoc", "", list), "[[3,4],7]");
    EXPECT_EQ(send(script, "miscslct", "", text("me")), "\"on me\"");
    EXPECT_EQ(send(script, "aevtquit"), "E-1708");
    EXPECT_EQ(info(script, kASHasOpenHandler), 1);

    EXPECT_EQ(handler(script, text("add")), "function add(a, b) { return a + b; }");
    EXPECT_EQ(handler(script, Desc('evnt', "testtest")), "() => 1");
    EXPECT_EQ(handler(script, Desc('evnt', "aevtpdoc")), "E-2723");
    EXPECT_EQ(handler(script, Desc('evnt', "short")), "E-50");
    for (const char* name : {"plain", "toString", "Array", "|no such|"})
        EXPECT_EQ(handler(script, text(name)), "E-2723") << name;
    EXPECT_EQ(handler(script, text("odd name")), "E-50");

    EXPECT_EQ(property(script, "plain"), "1");
    EXPECT_EQ(property(script, "declared"), "[2]");
    EXPECT_EQ(property(script, "unset"), "undefined");
    EXPECT_EQ(property(script, "odd name"), "E-50");
    EXPECT_EQ(property(script, "|odd name|"), "\"x\"");
    EXPECT_EQ(property(script, "add"), "E-2723");
    Desc names, functions;
    EXPECT_EQ(OSAGetPropertyNames(js, kOSAModeNull, script, names.out()), noErr);
    EXPECT_EQ(names.printed(),
              "['utxt'(\"declared\"), 'utxt'(\"plain\"), 'utxt'(\"unset\"), "
              "'utxt'(\"odd name\"), 'utxt'(\"throwing\")]");
    EXPECT_EQ(OSAGetHandlerNames(js, kOSAModeNull, script, functions.out()), noErr);
    EXPECT_EQ(functions.printed(), "['utxt'(\"f\"), 'utxt'(\"add\"), 'utxt'(\"openDocuments\")]");
}

TEST_F(Handlers, RunKeepsPropertiesAndInheritsFromItsContext) {
    const OSAID parent =
        compiled("var base = 10; const fixed = 5; function twice(x) {return 2*x;}");
    EXPECT_EQ(run(parent), "nothing");
    const OSAID child = compiled("var n; let more = 1; n = (n || 0) + 1; n + twice(base) + fixed");
    EXPECT_EQ(run(child), "E-1753");
    EXPECT_EQ(errorText(), "ReferenceError: twice is not defined (line 1)");
    EXPECT_EQ(run(child, parent), "27");
    EXPECT_EQ(run(child, parent), "28");
    EXPECT_EQ(send(child, "ascrpsbr", "twice", text("4")), "8");
    EXPECT_EQ(run(parent, child), "E-1753") << "each the other's parent";
    EXPECT_EQ(run(child, valueOf("1")), "E-1751");

    const OSAID runs = compiled("var count = 0; function run(args) { return [++count, args]; }");
    EXPECT_EQ(run(runs), "[1,undefined]");
    EXPECT_EQ(send(runs, "aevtoapp", "", text("x")), "[2,\"x\"]");
    EXPECT_EQ(send(compiled("6 * 7"), "aevtoapp"), "42");

    OSAID context = compiled("var a = 1; let b = 2;", kOSAModeCompileIntoContext);
    EXPECT_EQ(info(context, kOSAScriptIsTypeScriptContext), 1);
    EXPECT_EQ(OSACompile(js, text("a += b; var c = a"), kOSAModeAugmentContext, &context), noErr);
    EXPECT_EQ(property(context, "c"), "3");
    EXPECT_EQ(sourceOf(context), "var a = 1; let b = 2;\na += b; var c = a");
    EXPECT_EQ(OSACompile(js, text("let let"), kOSAModeNull, &context), errOSAScriptError);
    EXPECT_EQ(property(context, "c"), "3") << "the old one stays";
    const OSAID asked = compiled(
        "let once; var asked = asked || 0; Object.defineProperty(globalThis, 'seen', {get() {"
        " return ++asked; }, enumerable: true, configurable: true}); asked");
    run(asked);
    EXPECT_EQ(run(asked), "0") << "no getter is asked for a new global object";
}

TEST_F(Handlers, PromisesThatAreSettledStandForWhatTheyGive) {
    for (const auto& [source, shown] :
         {std::pair{"async function run() { return await 5 }", "5"},
          {"Promise.resolve(9).then(x => { later = x; })", "nothing"},
          {"new Promise(() => {})", "{}"},
          {"async function run() { throw new Error('late') }", "E-1753"}})
        EXPECT_EQ(run(compiled(source)), shown) << source;
    EXPECT_EQ(errorText(), "Error: late (line 1)");
}

TEST_F(Handlers, WhatATopLevelThatThrowsDeclaredIsNowhere) {
    const OSAID script = compiled("var early = 1; nothing.here; let late = 2; function f() {}");
    EXPECT_EQ(property(script, "late") + handler(script, text("f")), "E-1753E-1753");
    EXPECT_EQ(run(compiled("[early, typeof late]"), script), "[1,\"undefined\"]");
    OSAID copy = kOSANullScript;
    EXPECT_EQ(OSACopyID(js, script, &copy), noErr);
    EXPECT_EQ(property(copy, "late"), "E-1753");
    OSAID context = compiled("0", kOSAModeCompileIntoContext);
    const Desc more = text("early = 1; nothing.here; let late = 2, later = {};");
    EXPECT_EQ(OSACompile(js, more, kOSAModeAugmentContext, &context), errOSAScriptError);
    ASSERT_EQ(OSACopyID(js, context, &copy), noErr);
    for (const OSAID id : {context, copy})
        EXPECT_EQ(property(id, "late") + property(id, "early"), "E-27231") << "and it is no crash";
    const OSAID second = compiled("var k; k = (k || 0) + 1; if (k === 1) nothing.here; let y = k");
    EXPECT_EQ(run(second), "E-1753");
    EXPECT_EQ(property(second, "y"), "2");
}

TEST_F(Handlers, CopiesHaveTheStateAndFunctionsOfTheirOwn) {
    const OSAID script = compiled(
        "var n = 0, f = 1; let kept = 'a'; const o = {}; function add() { f = 2; made = 1; kept +="
        " 'b'; return ++n; }");
    EXPECT_EQ(send(script, "ascrpsbr", "add"), "1");
    OSAID copy = kOSANullScript;
    ASSERT_EQ(OSACopyID(js, script, &copy), noErr);
    EXPECT_EQ(property(copy, "made") + property(copy, "kept") + property(copy, "f"), "1\"ab\"2");
    EXPECT_EQ(send(copy, "ascrpsbr", "add"), "2");
    EXPECT_EQ(property(script, "n") + property(copy, "n") + property(copy, "kept"), "12\"abb\"");
}

TEST_F(Handlers, LinesAreLoggedForPeople) {
    static std::string lines;
    OSASetLogProc([](const char* line, void* end) { lines += line + std::string(1, *(char*)end); },
                  const_cast<char*>("|"));
    EXPECT_EQ(run("console.log('é', [1, 'a'], {a: null}); console.error(); console.warn('\\0')"),
              "nothing");
    EXPECT_EQ(run("console.log({get a() { throw 1 }})"), "E-1753");
    EXPECT_EQ(run("console.info(Array(1e6).fill('x'.repeat(1e6)))"), "E-1753");
    OSASetLogProc(nullptr, nullptr);
    EXPECT_EQ(run("console.debug({get a() { throw 1 }})"), "nothing");
    EXPECT_EQ(lines, "é [1, a] {a: null}||\uFFFD|");
}

TEST_F(Handlers, ErrorsTellWhereTheyAre) {
    struct Row {
        const char *source, *message, *brief, *range;
        SInt16 number;
    } const rows[] = {
        {"let ok;\r\n  let a b", "SyntaxError: unexpected token: identifier (line 2)",
         "unexpected token: identifier", "{ srcs:17, srce:18 }", -1753},
        {"1;\nnothing.here", "ReferenceError: nothing is not defined (line 2)",
         "nothing is not defined", "{ srcs:3, srce:10 }", -1753},
        {"const e = new Error('mine'); e.errorNumber = 7.7e1; throw e", "Error: mine (line 1)",
         "mine", "{ srcs:10, srce:13 }", 77},
        {"const e = new Error('far'); e.errorNumber = 2 ** 31; throw e", "Error: far (line 1)",
         "far", "{ srcs:10, srce:13 }", -1753},
        {"(function f() { f(); })()", "InternalError: too much recursion (line 1)",
         "too much recursion", "", -1753},
        {"throw {toString() { throw 1; }}", "", "", "", -1753},
        {"throw {message: 'hey'}", "hey (line 1)", "hey", "", -1753},
        {"throw new Proxy({message: 'hey'}, {})", "", "", "", -1753},
        {"import('fs').then(() => 0); x", "", "", "", -1753},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.source);
        OSAID id = kOSANullScript, value = kOSANullScript;
        OSAError status = OSACompile(js, text(row.source), kOSAModeNull, &id);
        if (status == noErr) status = OSAExecute(js, id, kOSANullScript, kOSAModeNull, &value);
        EXPECT_EQ(status, errOSAScriptError);
        if (*row.message != 0) {
            EXPECT_EQ(errorText(), row.message);
            EXPECT_EQ(errorText(kOSAErrorBriefMessage), row.brief);
        }
        if (*row.range != 0) {
            EXPECT_EQ(errorText(kOSAErrorRange), row.range);
        }
        Desc number;
        EXPECT_EQ(OSAScriptError(js, kOSAErrorNumber, typeSInt16, number.out()), noErr);
        EXPECT_EQ(number.bytes(), std::string(reinterpret_cast<const char*>(&row.number), 2));
    }
    EXPECT_EQ(errorText(kOSAErrorApp), "E-1701");
    const OSAID parent = compiled("function fails() { nothing.here; }");
    run(parent);
    EXPECT_EQ(run(compiled("\n\nfails()"), parent), "E-1753");
    EXPECT_EQ(errorText(), "ReferenceError: nothing is not defined");
    EXPECT_EQ(errorText(kOSAErrorRange), "E-1701") << "it is in the other source";
}

}  // namespace
}  // namespace osa::test
