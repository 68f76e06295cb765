// An open instance of the JavaScript component, with its answers as text.
#pragma once

#include <CoreServices/AEDataModel.h>
#include <CoreServices/AEHelpers.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <OSA/ScriptingComponents.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace osa::test {

struct Desc {
    AEDesc desc{typeNull, nullptr};
    Desc() = default;
    Desc(DescType type, std::string_view bytes) {
        AECreateDesc(type, bytes.data(), static_cast<Size>(bytes.size()), &desc);
    }
    Desc(Desc&& other) noexcept : desc(other.desc) { AEInitializeDesc(&other.desc); }
    Desc& operator=(Desc&&) = delete;
    ~Desc() { AEDisposeDesc(&desc); }
    operator const AEDesc*() const { return &desc; }
    AEDesc* out() { return &desc; }

    std::string bytes() const {
        std::string data(static_cast<std::size_t>(AEGetDescDataSize(&desc)), '\0');
        AEGetDescData(&desc, data.data(), static_cast<Size>(data.size()));
        return data;
    }
    std::string printed() const {
        Handle text = nullptr;
        if (AEPrintDescToHandle(&desc, &text) != noErr) return "unprintable";
        const std::string answer = *text;
        DisposeHandle(text);
        return answer;
    }
};

inline Desc text(std::string_view utf8) {
    return Desc(typeUTF8Text, utf8);
}

class Scripting : public testing::Test {
  protected:
    void SetUp() override { open(); }
    void TearDown() override {
        if (js != nullptr) CloseComponent(js);
    }
    void open() {
        if (js != nullptr) CloseComponent(js);
        js = OpenDefaultComponent(kOSAComponentType, 'jscr');
        ASSERT_NE(js, nullptr);
    }

    /// Statuses as "E" and the number.
    static std::string failed(OSAError status) { return "E" + std::to_string(status); }

    OSAID compiled(std::string_view source, SInt32 mode = kOSAModeNull) {
        OSAID id = kOSANullScript;
        EXPECT_EQ(OSACompile(js, text(source), mode, &id), noErr) << source << errorText();
        return id;
    }
    std::string shown(OSAID id, SInt32 mode = kOSAModeNull) {
        if (id == kOSANullScript) return "nothing";
        Desc answer;
        const OSAError status = OSADisplay(js, id, typeUTF8Text, mode, answer.out());
        return status == noErr ? answer.bytes() : failed(status);
    }
    std::string printed(OSAID id, DescType type = typeWildCard) {
        Desc answer;
        const OSAError status = OSACoerceToDesc(js, id, type, kOSAModeNull, answer.out());
        return status == noErr ? answer.printed() : failed(status);
    }
    std::string sourceOf(OSAID id) {
        Desc answer;
        const OSAError status = OSAGetSource(js, id, typeUTF8Text, answer.out());
        return status == noErr ? answer.bytes() : failed(status);
    }
    SInt32 info(OSAID id, OSType selector) {
        SInt32 answer = -1;
        const OSAError status = OSAGetScriptInfo(js, id, selector, &answer);
        return status == noErr ? answer : static_cast<SInt32>(status);
    }
    /// Compiles and runs; the value's number, which may be 0.
    OSAID valueOf(std::string_view source) {
        OSAID script = compiled(source), value = kOSANullScript;
        EXPECT_EQ(OSAExecute(js, script, kOSANullScript, kOSAModeNull, &value), noErr)
            << source << ": " << errorText();
        EXPECT_EQ(OSADispose(js, script), noErr);
        return value;
    }
    std::string run(OSAID script, OSAID context = kOSANullScript, SInt32 mode = kOSAModeNull) {
        OSAID value = kOSANullScript;
        const OSAError status = OSAExecute(js, script, context, kOSAModeNull, &value);
        if (status != noErr) return failed(status);
        const std::string answer = shown(value, mode);
        if (value != kOSANullScript) OSADispose(js, value);
        return answer;
    }
    std::string run(std::string_view source) {
        const OSAID script = compiled(source);
        const std::string answer = run(script);
        OSADispose(js, script);
        return answer;
    }
    std::string errorText(OSType selector = kOSAErrorMessage) {
        Desc answer;
        const bool isRange = selector == kOSAErrorRange;
        const auto type = static_cast<DescType>(isRange ? +typeWildCard : +typeUTF8Text);
        const OSAError status = OSAScriptError(js, selector, type, answer.out());
        if (status != noErr) return failed(status);
        return selector == kOSAErrorRange ? answer.printed() : answer.bytes();
    }

    ComponentInstance js = nullptr;
};

}  // namespace osa::test
