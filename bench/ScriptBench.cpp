// What the JavaScript component costs beside its engine called directly on one thread: loading a
// stored script and getting its source, and calling a function with five parameters. Prints
// microseconds and ratios taken in one run.
// Usage: osa-bench-scripts
#include <CoreServices/MacErrors.h>
#include <OSA/ScriptingComponents.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "bench/Timing.h"
#include "platform/osa/javascript/machine/Engine.h"

namespace {

constexpr double kShortestRun = 0.2;  // seconds

double microseconds(const std::function<void()>& work) {
    return osa::bench::secondsOf(work, kShortestRun) * 1e6;
}

void require(bool met) {
    if (!met) std::abort();
}

/// A script of some size, as people write them.
std::string exampleSource() {
    std::string source = "function five(a, b, c, d, e) { return a + b + c + d + e; }\n";
    for (int i = 0; i < 200; ++i) {
        const std::string number = std::to_string(i);
        source += "function handler" + number + "(x) {\n    // adds " + number +
                  "\n    return x.map(y => y + " + number + ");\n}\n";
    }
    return source;
}

class Scripting {
  public:
    Scripting() : js_(OpenDefaultComponent(kOSAComponentType, 'jscr')) {
        require(js_ != nullptr);
        const std::string source = exampleSource();
        AEDesc text;
        require(AECreateDesc(typeUTF8Text, source.data(), static_cast<Size>(source.size()),
                             &text) == noErr);
        require(OSACompile(js_, &text, kOSAModeNull, &script_) == noErr);
        require(OSAStore(js_, script_, typeOSAGenericStorage, kOSAModeNull, &stored_) == noErr);
        AEDisposeDesc(&text);
        makeEvent();
    }
    ~Scripting() {
        AEDisposeDesc(&event_);
        AEDisposeDesc(&stored_);
        CloseComponent(js_);
    }

    void loadAndGetSource() const {
        OSAID script = kOSANullScript;
        AEDesc source;
        require(OSALoad(js_, &stored_, kOSAModeNull, &script) == noErr);
        require(OSAGetSource(js_, script, typeUnicodeText, &source) == noErr);
        AEDisposeDesc(&source);
        OSADispose(js_, script);
    }
    void callFive() const {
        OSAID value = kOSANullScript;
        AEDesc answer;
        require(OSAExecuteEvent(js_, &event_, script_, kOSAModeNull, &value) == noErr);
        require(OSACoerceToDesc(js_, value, typeSInt32, kOSAModeNull, &answer) == noErr);
        AEDisposeDesc(&answer);
        OSADispose(js_, value);
    }

  private:
    void makeEvent() {
        require(AECreateAppleEvent(kASAppleScriptSuite, kASSubroutineEvent, nullptr,
                                   kAutoGenerateReturnID, kAnyTransactionID, &event_) == noErr);
        require(AEPutParamPtr(&event_, keyASSubroutineName, typeChar, "five", 4) == noErr);
        AEDesc list;
        require(AECreateList(nullptr, 0, false, &list) == noErr);
        for (SInt32 i = 1; i <= 5; ++i)
            require(AEPutPtr(&list, 0, typeSInt32, &i, sizeof i) == noErr);
        require(AEPutParamDesc(&event_, keyDirectObject, &list) == noErr);
        AEDisposeDesc(&list);
    }

    ComponentInstance js_;
    OSAID script_ = kOSANullScript;
    AEDesc stored_{typeNull, nullptr}, event_{typeNull, nullptr};
};

constexpr JSClass kGlobal = {
    "global", JSCLASS_GLOBAL_FLAGS, &JS::DefaultGlobalClassOps, nullptr, nullptr, nullptr};

/// Compiles in a new realm, as a component must that keeps scripts apart.
JSScript* compileDirectly(JSContext* cx, const std::u16string& source,
                          JS::MutableHandleObject global) {
    JS::RealmOptions realmOptions;
    global.set(JS_NewGlobalObject(cx, &kGlobal, nullptr, JS::FireOnNewGlobalHook, realmOptions));
    require(global != nullptr);
    JSAutoRealm realm(cx, global);
    JS::CompileOptions options(cx);
    options.setFileAndLine("bench", 1);
    JS::SourceText<char16_t> text;
    require(text.init(cx, source.data(), source.size(), JS::SourceOwnership::Borrowed));
    return JS::Compile(cx, options, text);
}

void printRow(const char* what, double cost, double floor) {
    std::printf("%-28s %10.1f %8.1f x\n", what, cost, cost / floor);
}

/// On a context of the benchmark's own.
void measure(JSContext* cx, const Scripting& component) {
    const std::string bytes = exampleSource();
    const std::u16string source(bytes.begin(), bytes.end());
    JS::RootedObject global(cx);
    int count = 0;
    double floor = microseconds([&] {
        require(compileDirectly(cx, source, &global) != nullptr);
        if (++count % 256 == 0) JS_GC(cx);
    });
    printRow("engine: new realm, compile", floor, floor);
    printRow("load, get source", microseconds([&] { component.loadAndGetSource(); }), floor);

    JS::RootedScript script(cx, compileDirectly(cx, source, &global));
    JSAutoRealm realm(cx, global);
    require(script != nullptr && JS_ExecuteScript(cx, script));
    JS::RootedValue answer(cx);
    floor = microseconds([&] {
        JS::RootedValueArray<5> five(cx);
        for (int i = 0; i < 5; ++i) five[i].setInt32(i + 1);
        require(JS_CallFunctionName(cx, global, "five", five, &answer));
    });
    printRow("engine: call of five", floor, floor);
    printRow("event with five parameters", microseconds([&] { component.callFive(); }), floor);
}

}  // namespace

int main() {
    const Scripting component;
    JSContext* const cx = JS_NewContext(256 << 20);
    require(cx != nullptr && JS::InitSelfHostedCode(cx));
    std::printf("%-28s %10s\n", "", "us");
    measure(cx, component);
    JS_DestroyContext(cx);
}
