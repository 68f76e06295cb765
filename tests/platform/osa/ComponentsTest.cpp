// The register, the generic component's routing with two languages, and the trailer.
#include <OSA/Diagnostics.h>
#include <OpenScripting/OSAGeneric.h>
#include <gtest/gtest.h>

#include <thread>
#include <tuple>

#include "tests/platform/osa/FakeComponent.h"

namespace osa::test {
namespace {

using First = FakeLanguage<'Afak'>;
using Second = FakeLanguage<'Bfak'>;

AEDesc descOf(DescType type, std::string_view bytes) {
    AEDesc desc;
    AECreateDesc(type, bytes.data(), static_cast<Size>(bytes.size()), &desc);
    return desc;
}

/// The bytes of the descriptor, which is disposed of.
std::string take(AEDesc desc) {
    std::string bytes = bytesOf(desc);
    AEDisposeDesc(&desc);
    return bytes;
}

TEST(StoredScripts, TrailerIsBelievedOnlyWhenItIsTrue) {
    using namespace std::string_literals;
    const std::string end = "jscr\0\1\0\x0C\xFA\xDE\xDE\xAD"s;
    const std::string padded = "\0jscr\0\1\0\x0D\xFA\xDE\xDE\xAD"s;
    const std::tuple<std::string, OSStatus, std::string> table[] = {
        {"body" + end, noErr, "body"},
        {"bod" + padded, noErr, "bod"},
        {end, noErr, ""},
        {"#!/bin/osa\nbody" + end, noErr, "body"},
        {"#!" + end, errOSABadStorageType, ""},
        {"body", errOSABadStorageType, ""},
        {"", errOSABadStorageType, ""},
        {"\xFA\xDE\xDE\xAD", errOSACorruptData, ""},
        {end.substr(1), errOSACorruptData, ""},
        {padded.substr(1), errOSACorruptData, ""},
        {"jscr\0\1\0\x0B\xFA\xDE\xDE\xAD"s, errOSACorruptData, ""},
        {"body jscr\0\1\0\x10\xFA\xDE\xDE\xAD"s, errOSACorruptData, ""},
        {"jscr\0\2\0\x0C\xFA\xDE\xDE\xAD"s, errOSADataFormatTooNew, ""},
    };
    for (const auto& [bytes, status, body] : table) {
        const auto script = parseStoredScript(asBytes(bytes));
        EXPECT_EQ(script.status(), status) << bytes;
        if (script) {
            EXPECT_EQ(asText(script->body), body) << bytes;
        }
    }
    for (const std::string body : {"", "odd", "even"}) {
        const auto made = makeStoredScript(asBytes(body), 'fake');
        EXPECT_EQ(made.size() % 2, 0U);
        EXPECT_EQ(asText(parseStoredScript(made)->body), body);
    }
}

class Components : public testing::Test {
  protected:
    Components() {
        EXPECT_EQ(OSARegisterComponent('Afak', "Première", First::calls(), &first_), noErr);
        EXPECT_EQ(OSARegisterComponent('Bfak', "Second", Second::calls(), &second_), noErr);
        generic_ = OpenDefaultComponent(kOSAComponentType, kOSAGenericScriptingComponentSubtype);
    }
    ~Components() override {
        if (generic_ != nullptr) {
            EXPECT_EQ(CloseComponent(generic_), noErr);
        }
        EXPECT_EQ(First::open + Second::open, 0);
        EXPECT_EQ(OSAUnregisterComponent(first_), noErr);
        EXPECT_EQ(OSAUnregisterComponent(second_), noErr);
        EXPECT_EQ(OSALiveBlockCount(), blocks_);
    }
    /// The status, with the number of the script in `id`.
    OSAError compile(OSType language, const std::string& source, OSAID& id) {
        EXPECT_EQ(OSASetDefaultScriptingComponent(generic_, language), noErr);
        AEDesc text = descOf(typeUTF8Text, source);
        const OSAError status = OSACompile(generic_, &text, 0, &id);
        AEDisposeDesc(&text);
        return status;
    }
    std::string source(OSAID id) {
        AEDesc text;
        const OSAError status = OSAGetSource(generic_, id, typeUTF8Text, &text);
        return status == noErr ? take(text) : "E" + std::to_string(status);
    }

    const CFIndex blocks_ = OSALiveBlockCount();
    Component first_ = nullptr;
    Component second_ = nullptr;
    ComponentInstance generic_ = nullptr;
};

TEST_F(Components, RegisterListsThemAndKeepsOpenOnes) {
    const ComponentDescription scripting{kOSAComponentType, 0, 0, 0, 0};
    std::string subTypes;
    for (Component at = nullptr; (at = FindNextComponent(at, &scripting)) != nullptr;) {
        ComponentDescription told;
        EXPECT_EQ(GetComponentInfo(at, &told, nullptr, nullptr, nullptr), noErr);
        for (int shift = 24; shift >= 0; shift -= 8)
            subTypes += static_cast<char>(told.componentSubType >> shift);
    }
    EXPECT_EQ(subTypes, "scptjscrAfakBfak");
    const ComponentDescription other{'thng', 0, 0, 0, 0};
    EXPECT_EQ(FindNextComponent(nullptr, &other), nullptr);
    const Handle name = NewHandle(0);
    EXPECT_EQ(GetComponentInfo(first_, nullptr, name, nullptr, nullptr), noErr);
    EXPECT_EQ(std::string(*name, 9), "\x08Premi\x8Fre");
    DisposeHandle(name);
    EXPECT_EQ(OSARegisterComponent('Afak', "again", First::calls(), nullptr), paramErr);
    OSAComponentCalls tooShort = *First::calls();
    --tooShort.size;
    EXPECT_EQ(OSARegisterComponent('Cfak', "short", &tooShort, nullptr), paramErr);
    const ComponentInstance instance = OpenComponent(first_);
    EXPECT_EQ(OSAUnregisterComponent(first_), OSErr(badComponentInstance));
    AEDesc language;
    EXPECT_EQ(OSAScriptingComponentName(instance, &language), noErr);
    EXPECT_EQ(take(language), "Premi\x8Fre");
    EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(CloseComponent(nullptr), OSErr(badComponentInstance));
    EXPECT_EQ(OpenComponent(nullptr), nullptr);
}

TEST_F(Components, CallsAnswerWhatIsMissing) {
    OSAID id = 7;
    AEDesc desc{'junk', nullptr};
    EXPECT_EQ(OSALoad(nullptr, &desc, 0, &id), badComponentInstance);
    EXPECT_EQ(id, 0U);
    EXPECT_EQ(OSALoad(generic_, nullptr, 0, &id), paramErr);
    EXPECT_EQ(OSALoad(generic_, &desc, 0, nullptr), paramErr);
    EXPECT_EQ(OSAGetSource(generic_, 99, typeChar, &desc), errOSAInvalidID);
    EXPECT_EQ(desc.descriptorType, DescType(typeNull));
    EXPECT_EQ(OSAScriptError(generic_, kOSAErrorMessage, typeChar, &desc), errAEDescNotFound);
    const ComponentInstance real = OpenComponent(first_);
    EXPECT_EQ(OSADisplay(real, 1, typeChar, 0, &desc), errOSABadSelector);
    OSType subType = 1;
    EXPECT_EQ(OSAGetDefaultScriptingComponent(real, &subType), errOSABadSelector);
    EXPECT_EQ(subType, 0U);
    CloseComponent(real);
}

TEST_F(Components, GenericKeepsTheLanguagesApart) {
    OSAID a = 0;
    OSAID b = 0;
    EXPECT_EQ(compile('Afak', "one", a), noErr);
    EXPECT_EQ(compile('Bfak', "two", b), noErr);
    EXPECT_EQ(source(a) + source(b), "onetwo");
    OSAID value = 0;
    EXPECT_EQ(OSAExecute(generic_, a, b, 0, &value), errOSAComponentMismatch);
    EXPECT_EQ(OSAExecute(generic_, b, 0, 0, &value), noErr);
    EXPECT_EQ(source(value), "two");
    // a script stays in its language whatever the default is
    EXPECT_EQ(compile('Bfak', "three", a), noErr);
    EXPECT_EQ(source(a), "three");

    OSAID real = a;
    ComponentInstance instance = nullptr;
    EXPECT_EQ(OSAGenericToRealID(generic_, &real, &instance), noErr);
    EXPECT_EQ(OSAGetSource(instance, real, typeUTF8Text, nullptr), paramErr);
    EXPECT_EQ(OSARealToGenericID(generic_, &real, instance), noErr);
    EXPECT_EQ(real, a);
    EXPECT_EQ(OSARealToGenericID(generic_, &real, generic_), errOSAComponentMismatch);
    OSAID never = 999;
    EXPECT_EQ(OSARealToGenericID(generic_, &never, instance), errOSAInvalidID);
    AEDescList names;
    EXPECT_EQ(OSAGetHandlerNames(generic_, 0, 0, &names), errOSABadSelector);

    OSAID bad = 0;
    AEDesc message;
    EXPECT_EQ(compile('Bfak', "bad", bad), errOSAScriptError);
    EXPECT_EQ(compile('Afak', "bad", a), errOSAScriptError);
    EXPECT_EQ(compile('Bfak', "throw", bad), errOSASystemError);
    EXPECT_EQ(OSAScriptError(generic_, kOSAErrorMessage, typeChar, &message), noErr);
    EXPECT_EQ(take(message), "no A");
    EXPECT_EQ(source(a), "three");
    EXPECT_EQ(OSADispose(generic_, a), noErr);
    EXPECT_EQ(OSADispose(generic_, a), errOSAInvalidID);
    EXPECT_EQ(source(b), "two");
}

TEST_F(Components, WhatItsOwnCallClosesEndsWithTheCall) {
    OSAID script = 0, value = 0;
    EXPECT_EQ(compile('Afak', "one", script), noErr);
    First::whileRunning = [&] {
        EXPECT_EQ(CloseComponent(generic_), noErr);
        EXPECT_EQ(OSADispose(generic_, script), badComponentInstance);
        EXPECT_EQ(First::open, 1);
    };
    EXPECT_EQ(OSAExecute(generic_, script, 0, 0, &value), noErr);
    EXPECT_EQ(First::open, 0);
    generic_ = nullptr;
}

TEST_F(Components, WhatAnotherThreadClosesEndsOnce) {
    for (int i = 0; i < 300; ++i) {
        const ComponentInstance real = OpenComponent(first_);
        std::atomic<bool> isInside = false;
        First::whileRunning = [&] { isInside = true; };
        OSAID value = 0;
        std::thread runner([&] { OSAExecute(real, 1, 0, 0, &value); });
        while (!isInside) std::this_thread::yield();
        EXPECT_EQ(CloseComponent(real), noErr);
        runner.join();
        EXPECT_EQ(First::open, 0);
    }
}

TEST_F(Components, GenericLoadsByTheTrailer) {
    const auto stored = makeStoredScript(asBytes("script"), 'Bfak');
    const std::string bytes(asText(stored));
    std::string foreign = bytes;
    foreign.replace(bytes.size() - 12, 4, "ascr");
    const std::tuple<DescType, std::string, OSAError, OSType> table[] = {
        {typeOSAGenericStorage, bytes, noErr, 'Bfak'},
        {'Bfak', bytes, noErr, 0},
        {typeOSAGenericStorage, foreign, errOSACantOpenComponent, 'ascr'},
        {typeOSAGenericStorage, "text", errOSABadStorageType, 0},
        {typeChar, bytes, errOSABadStorageType, 0},
    };
    for (const auto& [type, data, status, subType] : table) {
        AEDesc desc = descOf(type, data);
        OSAID id = 0;
        EXPECT_EQ(OSALoad(generic_, &desc, 0, &id), status);
        EXPECT_EQ(id != 0, status == noErr);
        if (status == noErr) {
            EXPECT_EQ(source(id), "script");
        }
        OSType told = 1;
        OSAGetScriptingComponentFromStored(generic_, &desc, &told);
        EXPECT_EQ(told, subType);
        AEDisposeDesc(&desc);
    }
    EXPECT_EQ(OSASetDefaultScriptingComponent(generic_, 'none'), errOSACantOpenComponent);
    EXPECT_EQ(OSASetDefaultScriptingComponent(generic_, 'scpt'), errOSACantOpenComponent);
    // what is still there is its languages' to dispose of
    EXPECT_EQ(Second::open, 1);
    EXPECT_EQ(OSAUnregisterComponent(second_), OSErr(badComponentInstance));
}

}  // namespace
}  // namespace osa::test
