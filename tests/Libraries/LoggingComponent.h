// A scripting component that logs what it is asked and answers as it is told, and the fixture of
// the tests that open it.
#pragma once

#include <CoreServices/Resources.h>
#include <OSA/ScriptingComponents.h>

#include "Libraries/MacToolboxLib/COSAID/COSAID.h"
#include "tests/support/Descriptors.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {

inline const std::string kTrailer = "\xFA\xDE\xDE\xAD";

inline std::string code(UInt32 value) {
    std::string text;
    for (const int shift : {24, 16, 8, 0}) text += static_cast<char>(value >> shift);
    return text;
}

/// What was asked, what is answered, and the numbers that are alive.
struct Component {
    std::string log;   // each call with "; " behind it
    std::string told;  // "begin=status,...": what calls that begin so answer in place of noErr
    bool logsInfo = false;
    std::map<UInt32, SInt32> info{{'best', 'utxt'}};
    CAEDesc value = descOf('TEXT', "value");  // of any type, or the best
    std::string stored = "script";
    Boolean storable = 0;
    CAEDesc event;  // the last one
    std::set<OSAID> alive;
    OSAID next = 1;
    UInt32 asked = 0;  // the code that was asked for last

    OSAID fresh() { return *alive.insert(next++).first; }

    // Arguments as text; results have none, but a number that is to be replaced.

    std::string text(SInt32 number) { return " " + std::to_string(number); }
    std::string text(UInt32 number) {
        return " " + (number >> 24 == 0 ? std::to_string(number) : code(asked = number));
    }
    std::string text(const AEDesc* desc) {
        if (desc->descriptorType == 'aevt') return event.Copy(desc), "";
        return " " + code(desc->descriptorType) + " " + dataOf(CAEDescReader(*desc));
    }
    std::string text(const FSRef* file) { return " " + contentOf(pathOf(*file)); }
    std::string text(OSAID* id) { return *id == 0 ? "" : text(*id); }
    std::string text(AEDesc*) { return ""; }
    std::string text(void*) { return ""; }

    OSAError give(auto) { return noErr; }
    OSAError give(OSAID* id) { return *id = *id != 0 ? *id : fresh(), noErr; }
    OSAError give(SInt32* answer) { return *answer = info[asked], noErr; }
    OSAError give(Boolean* answer) { return *answer = storable, noErr; }
    OSAError give(AEDesc* result) {
        if (asked == '****' || asked == 'best') return AEDuplicateDesc(&value.GetDesc(), result);
        const std::string bytes = asked == 'scpt' ? stored : "text";
        const auto size = static_cast<Size>(bytes.size());
        const OSErr status = AECoercePtr(typeChar, bytes.data(), size, asked, result);
        return status == noErr ? status : AECreateDesc(asked, bytes.data(), size, result);
    }
    OSAError answered(const std::string& call) {
        if (logsInfo || !call.starts_with("info")) log += call + "; ";
        for (std::size_t at = 0, end; (end = told.find('=', at)) < told.size();) {
            if (call.starts_with(told.substr(at, end - at))) return std::stoi(told.substr(end + 1));
            at = told.find(',', end) + 1;
        }
        return noErr;
    }
};
inline Component* gComponent = nullptr;

template <std::size_t N>
struct Word {
    consteval Word(const char (&from)[N]) { std::copy_n(from, N, text); }
    char text[N];
};

/// A call of the component.
template <Word Name, typename... Arguments>
OSAError entry(void*, Arguments... arguments) {
    OSAError status = gComponent->answered((Name.text + ... + gComponent->text(arguments)));
    ((status = status == noErr ? gComponent->give(arguments) : status), ...);
    return status;
}

inline OSAComponentCalls loggingCalls() {
    OSAComponentCalls t{};
    t.size = sizeof t;
    t.open = [](ComponentInstance, void**) { return OSAError{noErr}; };
    t.close = [](void*) {};
    t.load = entry<"load">, t.store = entry<"store">;
    t.loadFile = entry<"loadFile">, t.storeFile = entry<"storeFile">;
    t.execute = entry<"execute">, t.executeEvent = entry<"event">;
    t.display = entry<"display">, t.getSource = entry<"source">;
    t.dispose = [](void*, OSAID id) {
        EXPECT_EQ(gComponent->alive.erase(id), 1U) << id << " is disposed of again";
        return entry<"dispose">(nullptr, id);
    };
    t.compile = entry<"compile">, t.copyID = entry<"copy">, t.getScriptInfo = entry<"info">;
    t.coerceFromDesc = entry<"set">, t.coerceToDesc = entry<"get">;
    t.getHandler = entry<"handler">, t.getProperty = entry<"property">;
    return t;
}

/// Keeps two resource files open, of which the older one is current: whatever opens another one
/// and closes it leaves the younger one current, unless it puts the current one back.
class Scripts : public testing::Test {
  protected:
    using Work = std::function<void()>;
    struct Row {
        Work work;
        std::string log;  // with the status that is thrown
        std::string told{};
    };

    Scripts() {
        gComponent = &component;
        static const OSAComponentCalls calls = loggingCalls();
        OSARegisterComponent('test', "Test", &calls, nullptr);
        instance = OpenDefaultComponent(kOSAComponentType, 'test');
        for (const UniChar name : {UniChar{'0'}, UniChar{'1'}}) {
            FSRef made{};
            FSCreateResFile(&parent, 1, &name, 0, nullptr, &made, nullptr);
            files[name - '0'] = FSOpenResFile(&made, fsRdPerm);
        }
        UseResFile(files[0]);
    }
    ~Scripts() override {
        for (const ResFileRefNum file : files) CloseResFile(file);
        CloseComponent(instance);
        EXPECT_TRUE(component.alive.empty()) << "not disposed of";
    }
    /// What the component is asked meanwhile, and the status that is thrown.
    std::string did(const Work& work, const std::string& told = {}) {
        component.log.clear();
        component.told = told + ",";
        const OSStatus status = thrown(work);
        component.told.clear();
        EXPECT_EQ(CurResFile(), files[0]);
        return component.log + (status == noErr ? "" : std::to_string(status));
    }
    void check(std::initializer_list<Row> rows) {
        for (const Row& row : rows) EXPECT_EQ(did(row.work, row.told), row.log);
    }

    /// Each operation of the platform in `work` fails once, which is told to `after` with the
    /// status.
    template <typename After>
    void failEach(const Work& work, After after) {
        for (UInt32 nth = 1, failed = 1; failed != 0; ++nth) {
            const Resources before;
            OSStatus status = noErr;
            failed = failing(nth, false, [&] { status = thrown(work); });
            EXPECT_EQ(CurResFile(), files[0]) << nth;
            EXPECT_EQ(Resources(), before) << nth;
            after(status, failed != 0);
        }
    }

    const NoLeaks leaks;
    Component component;
    const TemporaryFolder folder;
    const FSRef parent = refOf(folder.path());
    ResFileRefNum files[2];
    ComponentInstance instance = nullptr;
};

}  // namespace osa::test
