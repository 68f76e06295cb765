// COSAID against a component that logs what it is asked and answers as it is told.
#include "Libraries/MacToolboxLib/COSAID/COSAID.h"

#include <CoreServices/Finder.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Processes.h>
#include <CoreServices/Resources.h>
#include <OSA/ScriptingComponents.h>

#include <random>

#include "tests/support/Library.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Test.h"

namespace osa::test {
namespace {

const std::string kTrailer = "\xFA\xDE\xDE\xAD";

/// What the component was asked, what it answers, and the numbers that are alive.
struct Component {
    std::vector<std::string> log;
    std::map<std::string, OSAError> status;
    std::map<OSType, SInt32> info{{'best', 'utxt'}};
    std::string stored = "script" + kTrailer;
    std::string event;  // the last one, flattened
    std::set<OSAID> alive;
    OSAID next = 1;

    OSAError called(const std::string& call) {
        log.push_back(call);
        const auto told = status.find(call.substr(0, call.find(' ')));
        return told == status.end() ? noErr : told->second;
    }
    OSAError give(const std::string& call, OSAID* id) {
        if (const OSAError failed = called(call); failed != noErr) return failed;
        alive.insert(*id = next++);
        return noErr;
    }
    /// The calls since, each with a "; " behind it.
    std::string takeLog() {
        std::string all;
        for (const std::string& call : std::exchange(log, {})) all += call + "; ";
        return all;
    }
};
Component* gComponent = nullptr;

std::string code(UInt32 value) {
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
            static_cast<char>(value >> 8), static_cast<char>(value)};
}

const unsigned char* pascal(const std::string& text) {
    static Str255 name;
    name[0] = static_cast<unsigned char>(text.size());
    std::copy(text.begin(), text.end(), name + 1);
    return name;
}

std::string dataOfDesc(const AEDesc& desc) {
    std::string bytes(static_cast<std::size_t>(AEGetDescDataSize(&desc)), '\0');
    AEGetDescData(&desc, bytes.data(), static_cast<Size>(bytes.size()));
    return bytes;
}

std::string mode(SInt32 flags) {
    return " mode " + std::to_string(flags);
}

OSAError answer(const std::string& call, DescType type, AEDesc* result) {
    const OSAError status = gComponent->called(call);
    if (status != noErr) return status;
    const std::string text = type == typeUnicodeText ? std::string("a\0b\0", 4) : "ab";
    return AECreateDesc(type == typeWildCard ? DescType{typeChar} : type, text.data(),
                        static_cast<Size>(text.size()), result);
}

std::string flattened(const AEDesc* desc) {
    std::string bytes(static_cast<std::size_t>(AESizeOfFlattenedDesc(desc)), '\0');
    AEFlattenDesc(desc, bytes.data(), static_cast<Size>(bytes.size()), nullptr);
    return bytes;
}

OSAComponentCalls calls() {
    OSAComponentCalls table{};
    table.size = sizeof table;
    table.open = [](ComponentInstance, void** storage) {
        *storage = nullptr;
        return OSAError{noErr};
    };
    table.close = [](void*) {};
    table.load = [](void*, const AEDesc* data, SInt32 flags, OSAID* id) {
        return gComponent->give("load " + dataOfDesc(*data) + mode(flags), id);
    };
    table.store = [](void*, OSAID, DescType type, SInt32 flags, AEDesc* result) {
        const OSAError status = gComponent->called("store " + code(type) + mode(flags));
        const std::string& stored = gComponent->stored;
        return status != noErr
                   ? status
                   : AECreateDesc(type, stored.data(), static_cast<Size>(stored.size()), result);
    };
    table.execute = [](void*, OSAID id, OSAID context, SInt32 flags, OSAID* result) {
        return gComponent->give(
            "execute " + std::to_string(id) + " in " + std::to_string(context) + mode(flags),
            result);
    };
    table.executeEvent = [](void*, const AppleEvent* event, OSAID, SInt32 flags, OSAID* result) {
        gComponent->event = flattened(event);
        return gComponent->give("event" + mode(flags), result);
    };
    table.display = [](void*, OSAID, DescType type, SInt32 flags, AEDesc* result) {
        return answer("display " + code(type) + mode(flags), type, result);
    };
    table.dispose = [](void*, OSAID id) {
        return gComponent->alive.erase(id) == 1 ? OSAError{noErr} : OSAError{errOSAInvalidID};
    };
    table.getScriptInfo = [](void*, OSAID, OSType selector, SInt32* result) {
        *result = gComponent->info[selector];
        return gComponent->called("info " + code(selector));
    };
    table.compile = [](void*, const AEDesc* source, SInt32 flags, OSAID* id) {
        const std::string call = "compile " + dataOfDesc(*source) + mode(flags);
        return *id != 0 ? gComponent->called(call) : gComponent->give(call, id);
    };
    table.copyID = [](void*, OSAID from, OSAID* to) {
        return gComponent->give("copy " + std::to_string(from), to);
    };
    table.getSource = [](void*, OSAID, DescType type, AEDesc* result) {
        return answer("source " + code(type), type, result);
    };
    table.coerceFromDesc = [](void*, const AEDesc* desc, SInt32 flags, OSAID* id) {
        return gComponent->give("set " + dataOfDesc(*desc) + mode(flags), id);
    };
    table.coerceToDesc = [](void*, OSAID, DescType type, SInt32 flags, AEDesc* result) {
        return answer("get " + code(type) + mode(flags), type, result);
    };
    table.getHandler = [](void*, SInt32 flags, OSAID, const AEDesc* name, OSAID* id) {
        return gComponent->give("handler " + dataOfDesc(*name) + mode(flags), id);
    };
    table.getProperty = [](void*, SInt32 flags, OSAID, const AEDesc* name, OSAID* id) {
        return gComponent->give("property " + dataOfDesc(*name) + mode(flags), id);
    };
    return table;
}

class Scripts : public testing::Test {
  protected:
    Scripts() {
        gComponent = &component;
        static const OSAComponentCalls table = calls();
        ::Component registered = nullptr;
        OSARegisterComponent('test', "Test", &table, &registered);
        instance = OpenDefaultComponent(kOSAComponentType, 'test');
    }
    ~Scripts() override {
        CloseComponent(instance);
        EXPECT_EQ(CurResFile(), current);
        EXPECT_TRUE(component.alive.empty()) << "not disposed of";
        gComponent = nullptr;
    }
    /// Owns a new number.
    void fill(COSAID& script) {
        script.Aquire(component.next);
        component.alive.insert(component.next++);
    }

    Component component;
    ComponentInstance instance = nullptr;
    const ResFileRefNum current = CurResFile();
    const NoLeaks leaks;
};

TEST_F(Scripts, TypesAreReadFromTheFirstByte) {
    COSAID script(instance);
    EXPECT_EQ(script.GetType(), DescType{typeNull});
    CAEDesc value;
    script.Get(value, typeChar, 0);
    EXPECT_EQ(value.GetType(), DescType{typeNull});
    EXPECT_EQ(component.takeLog(), "") << "nobody is asked about nothing";
    fill(script);
    const std::tuple<SInt32, SInt32, OSType, const char*> rows[] = {
        {1, 1, 'utxt', "info cscr; info cntx; info best; "},
        {0x01000000, 0, 'scpt', "info cscr; "},
        {0, 0x01000000, 'scpt', "info cscr; info cntx; "},
        {0, 0, 'utxt', "info cscr; info cntx; info best; "}};
    for (const auto& [compiled, context, type, log] : rows) {
        component.info = {{'cscr', compiled}, {'cntx', context}, {'best', 'utxt'}};
        EXPECT_EQ(script.GetType(), type);
        EXPECT_EQ(component.takeLog(), log);
    }
    component.status["info"] = errOSAInvalidID;
    EXPECT_EQ(thrown([&] { script.GetType(); }), errOSAInvalidID);
    EXPECT_FALSE(script.IsUndefined() || script.IsMissingValue());
    EXPECT_EQ(thrown([&] { script.IsFile(); }), errOSAInvalidID);
    testing::internal::CaptureStderr();
    script.Get(static_cast<AEDesc*>(nullptr), typeChar, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Libraries/MacToolboxLib/COSAID:147: failed assertion `value'\n");
}

TEST_F(Scripts, ValuesAreAskedForInTheirOrder) {
    COSAID script(instance);
    fill(script);
    const auto asks = [&](std::map<std::string, OSAError> statuses, auto work) {
        component.status = std::move(statuses);
        component.takeLog();
        const OSStatus status = thrown(work);
        std::string log = component.takeLog();
        while (log.starts_with("info")) log.erase(0, log.find("; ") + 2);
        return log + std::to_string(status);
    };
    CAEDesc desc;
    const auto get = [&](DescType type) {
        const std::string log = asks({}, [&] { script.Get(desc, type, 0x40); });
        return log + " " + code(desc.GetType());
    };
    for (const DescType type :
         {DescType{typeWildCard}, DescType{'STXT'}, DescType{'best'}, DescType{'utxt'}})
        EXPECT_EQ(get(type), "display utxt mode 72; 0 utxt") << code(type);
    EXPECT_EQ(get('long'), "get long mode 64; 0 long");
    component.info['best'] = 'list';
    EXPECT_EQ(get('utxt'), "get utxt mode 64; 0 utxt");

    const auto show = [&](DescType type) { return [&, type] { script.Display(desc, type, 5); }; };
    EXPECT_EQ(asks({{"display", -1700}}, show('STXT')),
              "display STXT mode 5; display TEXT mode 0; -1700");
    EXPECT_EQ(asks({{"display", -1700}}, show('utxt')), "display utxt mode 5; -1700");
    const auto read = [&](DescType type) { return [&, type] { script.GetSource(desc, type); }; };
    EXPECT_EQ(asks({}, read('best')), "source STXT; 0");
    EXPECT_EQ(asks({{"source", -1700}}, read('best')), "source STXT; source TEXT; -1700");
    EXPECT_EQ(asks({{"source", -1700}}, read('utxt')), "source utxt; -1700");
    EXPECT_EQ(asks({{"source", -1751}}, read('utxt')), "source utxt; display TEXT mode 0; 0");
    EXPECT_EQ(asks({{"source", -1751}, {"display", -1700}}, read('STXT')),
              "source STXT; display TEXT mode 0; source TEXT; -1751");
    TCLString text;
    std::string bytes;
    SCoreFoundation<CFStringRef> string;
    EXPECT_EQ(asks({}, [&] { script.Display(text, 1); }), "display best mode 1; -1700");
    EXPECT_EQ(asks({}, [&] { script.GetSource(text); }), "source utxt; 0");
    EXPECT_EQ(asks({}, [&] { script.Display(bytes, 1), script.GetSource(bytes); }),
              "display TEXT mode 1; source TEXT; 0");
    EXPECT_EQ(asks({}, [&] { script.Display(string, 1), script.GetSource(string); }),
              "display utxt mode 1; source utxt; 0");
}

TEST_F(Scripts, EveryNumberIsDisposedOfOnce) {
    std::minstd_rand random(1904);
    COSAID scripts[3] = {COSAID(instance), COSAID(instance), COSAID(instance)};
    const CAEDesc text(true);
    for (int round = 0; round < 3000; ++round) {
        COSAID& one = scripts[random() % 3];
        COSAID& other = scripts[random() % 3];
        component.status = {{std::array{"set", "copy", "load", "none"}[random() % 4], -50}};
        (void)thrown([&] {
            switch (random() % 8) {
                case 0:
                    return one.Set(&text.GetDesc());
                case 1:
                    return one.Copy(other);
                case 2:
                    return &one != &other ? one.Aquire(other) : one.Free();
                case 3:
                    return one.Load(&text.GetDesc(), 0);
                case 4:
                    return one.SetOSAID(instance, one.GetOSAID());
                case 5:
                    return one.SetComponent(instance);
                case 6:
                    return one.Compile(&text.GetDesc(), 0);
                default:
                    return fill(one);
            }
        });
        if (one.GetComponent() == nullptr) one.SetComponent(instance);
        if (other.GetComponent() == nullptr) other.SetComponent(instance);
        std::size_t held = 0;
        for (const COSAID& script : scripts) held += script.GetOSAID() != 0;
        ASSERT_EQ(component.alive.size(), held);
    }
    component.takeLog();
    COSAID empty(instance);
    empty.Copy(OSAID{0});
    EXPECT_EQ(component.takeLog(), "") << "there is nothing to copy";
}

TEST_F(Scripts, SubroutineEventsHoldNameAndParameters) {
    COSAID script(instance);
    COSAID result(instance);
    fill(script);
    const CAEDesc a(true);
    const CAEDesc b(false);
    const auto sent = [&] {
        AEDesc event;
        EXPECT_EQ(AEUnflattenDesc(component.event.data(), &event), noErr);
        const CAEDesc copy{CAEDescReader(event)};
        AEDisposeDesc(&event);
        return copy;
    };
    const auto parameters = [&] {
        const CAEDesc event = sent();
        CAEDesc list;
        const OSStatus none = thrown([&] { event.GetProperty('----', list, typeWildCard); });
        if (none != noErr) return std::to_string(none);
        std::string all = code(list.GetType());
        for (SInt32 i = 1; i <= list.CountItems(); ++i) {
            CAEDesc item;
            list.GetItem(i, item, typeWildCard);
            all += item.GetBool() ? " 1" : " 0";
        }
        return all;
    };
    script.CallFunction("caf\x8E", result, kOSAModeNeverInteract);
    EXPECT_EQ(component.takeLog(), "event mode 16; ");
    EXPECT_EQ(parameters(), "-1701") << "no parameter at all";
    const CAEDesc event = sent();
    CAEDesc name;
    event.GetProperty('snam', name, typeWildCard);
    EXPECT_EQ(code(name.GetType()) + dataOfDesc(name.GetDesc()), "TEXTcaf\x8E");
    CAEDesc value;
    script.CallFunction("f", value, a, 0);
    EXPECT_EQ(parameters(), "list 1");
    script.CallFunction("f", result, a, b, 0);
    EXPECT_EQ(parameters(), "list 1 0");
    script.Call("f", b, a, b, 0);
    EXPECT_EQ(parameters(), "list 0 1 0");
    script.Call("f", b, a, b, a, 0);
    EXPECT_EQ(parameters(), "list 0 1 0 1");
    script.CallFunction("f", result, b, a, b, a, a, 0);
    EXPECT_EQ(parameters(), "list 0 1 0 1 1");
    CAEDesc list;
    list.MakeList();
    script.CallFunctionParamList(a, result, list, 3);
    EXPECT_EQ(parameters(), "list");
    sent().GetProperty('snam', name, typeWildCard);
    EXPECT_EQ(name.GetType(), DescType{typeBoolean});
    component.status["event"] = errOSAScriptError;
    EXPECT_EQ(thrown([&] { script.CallFunction("f", result, 0); }), errOSAScriptError);
    EXPECT_EQ(result.GetOSAID(), 0U) << "freed before it is run";
}

TEST_F(Scripts, NamesAreWrappedWhileTheyAreRefused) {
    COSAID script(instance);
    fill(script);
    component.status = {{"handler", paramErr}, {"property", paramErr}};
    for (const auto& [length, count, last] :
         {std::tuple{0, 128, 254}, {1, 128, 255}, {253, 2, 255}, {254, 1, 254}, {255, 1, 255}}) {
        Str255 name;
        std::memset(name, 'x', sizeof name);
        name[0] = static_cast<unsigned char>(length);
        OSAID id = 0;
        EXPECT_EQ(thrown([&] { script.GetHandler(name, &id); }), paramErr);
        EXPECT_EQ(component.log.size(), static_cast<std::size_t>(count)) << length;
        EXPECT_EQ(component.log.back().size(), std::strlen("handler  mode 0") + last) << length;
        component.takeLog();
        EXPECT_EQ(thrown([&] { script.GetProperty(name, &id); }), paramErr);
        EXPECT_EQ(component.log.size(), static_cast<std::size_t>(count));
        component.takeLog();
        CAEDesc desc(name);
        EXPECT_EQ(thrown([&] { script.GetProperty(&desc.GetDesc(), &id); }), paramErr);
        const std::size_t wrapped = length < 254 ? count : 128 + 1;
        EXPECT_EQ(component.log.size(), length == 253 ? 2U : wrapped) << length;
        if (length >= 254) {
            EXPECT_EQ(component.log[1], length == 254 ? "property  mode 0" : "property | mode 0");
        }
        component.takeLog();
    }
    component.status = {{"property", 0x10000}};
    OSAID id = 0;
    EXPECT_EQ(thrown([&] { script.GetProperty(pascal("x"), &id); }), noErr)
        << "16 bits of it count";
}

TEST_F(Scripts, HandlersAreLookedUpByEvent) {
    COSAID script(instance);
    const auto ask = [&](AEEventClass eventClass, AEEventID id, const char* name = nullptr) {
        const ProcessSerialNumber self = {0, kCurrentProcess};
        const CAEDesc target(&self);
        AppleEvent event;
        FailOSErr(AECreateAppleEvent(eventClass, id, &target.GetDesc(), -1, 0, &event));
        if (name != nullptr)
            AEPutParamPtr(&event, 'snam', typeChar, name, static_cast<Size>(std::strlen(name)));
        std::string told;
        const OSStatus status = thrown([&] { told = script.HasHandler(&event) ? "yes" : "no"; });
        AEDisposeDesc(&event);
        return component.takeLog() + (status == noErr ? told : std::to_string(status));
    };
    EXPECT_EQ(ask('aevt', 'oapp'), "no") << "of an empty one";
    fill(script);
    const std::string asked = "handler aevtpdoc mode 0; ";
    EXPECT_EQ(ask('aevt', 'oapp'), "yes");
    EXPECT_EQ(ask('aevt', 'odoc'), "info hsod; no");
    EXPECT_EQ(ask('aevt', 'pdoc'), asked + "yes");
    EXPECT_EQ(ask('ascr', 'psbr', "f"), "handler f mode 0; yes");
    EXPECT_EQ(ask('ascr', 'psbr'), "-1701");
    EXPECT_EQ(ask('ascr', 'noop'), "handler ascrnoop mode 0; yes");
    component.info['hsod'] = 1;
    EXPECT_EQ(ask('aevt', 'odoc'), "info hsod; yes");
    component.status = {{"handler", 0x10000}, {"info", -1}};
    EXPECT_EQ(ask('aevt', 'pdoc'), asked + "yes") << "16 bits";
    EXPECT_FALSE(script.HasHandler('aevt', 'pdoc')) << "32 bits";
    EXPECT_EQ(thrown([&] { script.HasOpenHandler(); }), -1);
    EXPECT_FALSE(script.HasHandler(&CAEDesc::sTrue.GetDesc()));
}

TEST_F(Scripts, WrongComponentsEndTheProcess) {
    COSAID script(instance);
    COSAID stranger(nullptr);
    COSAID result(instance);
    component.takeLog();
    EXPECT_DEATH(script.Execute(stranger, 0), "COSAID:1162: failed assertion `result.GetComp");
    EXPECT_DEATH(script.Execute(stranger, result, 0), "COSAID:1137: failed assertion `parent.Get");
    EXPECT_DEATH(script.Execute(result, stranger, 0), "COSAID:1138: failed assertion `result.Get");
    fill(script);
    COSAID parent(instance);
    fill(parent);
    script.Execute(parent, result, 4);
    EXPECT_EQ(component.takeLog(), "execute 1 in 2 mode 4; ");
}

/// The type and ID of every resource, and the script's bytes.
std::string resourcesOf(const std::string& path) {
    const FSRef ref = refOf(path);
    const ResFileRefNum file = FSOpenResFile(&ref, fsRdPerm);
    if (file == -1) return "none";
    std::string all = std::to_string(Count1Resources('scpt')) + "+" +
                      std::to_string(Count1Resources('TEXT')) + " ";
    if (const Handle script = Get1Resource('scpt', 128))
        all += std::string(*script, static_cast<std::size_t>(GetHandleSize(script)));
    CloseResFile(file);
    return all;
}

void addText(const FSRef& ref) {
    const ResFileRefNum file = FSOpenResFile(&ref, fsRdWrPerm);
    AddResource(NewHandle(3), 'TEXT', 128, nullptr);
    CloseResFile(file);
}

TEST_F(Scripts, AreStoredInEightShapesAndLoadedAgain) {
    const TemporaryFolder folder;
    const FSRef parent = refOf(folder.path());
    const FSRef beside = refOf(folder.write("beside", ""));
    FSSpec spec{};
    FailOSErr(FSGetCatalogInfo(&beside, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr));
    COSAID script(instance);
    fill(script);
    // The fork, the shape, and the file that this makes.
    for (const auto& [isInFork, shape, name] : {std::tuple{false, 0, "res URL"},
                                                {false, 1, "res name"},
                                                {false, 2, "res spec"},
                                                {true, 0, "data URL"},
                                                {true, 1, "data name"},
                                                {true, 2, "data spec"}}) {
        SCOPED_TRACE(name);
        const bool isFork = isInFork;
        const int form = shape;
        HFSUniStr255 leaf;
        FromTCLString(utf16(name), leaf);
        const std::string path = folder.path(name);
        std::string escaped = path;
        escaped.replace(escaped.rfind(' '), 1, "%20");
        const TCLString url = utf16("file://" + escaped);
        std::memcpy(spec.name, pascal(name), std::strlen(name) + 1);
        const auto store = [&](OSType creator, bool withSource) {
            const auto length = static_cast<UInt16>(url.size());
            if (isFork && form == 0) script.StoreDF(length, url.data(), creator, withSource);
            if (isFork && form == 1) script.StoreDF(&parent, &leaf, creator, withSource);
            if (isFork && form == 2) script.StoreDF(&spec, creator, withSource);
            if (!isFork && form == 0) script.Store(length, url.data(), creator, withSource);
            if (!isFork && form == 1) script.Store(&parent, &leaf, creator, withSource);
            if (!isFork && form == 2) script.Store(&spec, creator, withSource);
        };
        const auto check = [&](const std::string& others) {
            EXPECT_EQ(isFork ? contentOf(path) : resourcesOf(path),
                      (isFork ? "" : "1+" + others + " ") + component.stored);
            const FinderInfo finder = specOf(path).GetFinderInfo();
            EXPECT_EQ(code(finder.fdType) + code(finder.fdCreator), "osasToyS");
            COSAID loaded(instance);
            bool isDataFork = !isFork;
            const FSRef file = refOf(path);
            component.takeLog();
            loaded.Load(&file, isDataFork, 9);
            EXPECT_EQ(isDataFork, isFork);
            EXPECT_EQ(component.takeLog(), "load " + component.stored + " mode 9; ");
        };
        component.stored = "a much longer script" + kTrailer;
        store('ToyS', true);
        EXPECT_EQ(component.takeLog(), "store scpt mode 0; ");
        check("0");
        const FSRef file = refOf(path);
        if (!isFork) addText(file);
        component.stored = "short" + kTrailer;
        store('else', false);
        EXPECT_EQ(component.takeLog(), "store scpt mode 1; ");
        check("1");
        component.stored = "by reference" + kTrailer;
        isFork ? script.StoreDF(&file, true) : script.Store(&file, true);
        check("1");
        component.status["store"] = errOSASourceNotAvailable;
        EXPECT_EQ(thrown([&] { store('else', true); }), errOSASourceNotAvailable);
        component.status.clear();
        check("1");
    }
    EXPECT_EQ(thrown([&] { script.Store(&parent, nullptr, 'ToyS', true); }), paramErr);
    for (const auto& [text, status] :
         {std::pair{std::string("file:///nowhere/at%20all"), OSStatus{memFullErr}},
          {"file://" + folder.path() + "/" + std::string(256, 'x'), errFSNameTooLong}}) {
        const TCLString url = utf16(text);
        EXPECT_EQ(
            thrown([&] { script.StoreDF(static_cast<UInt16>(url.size()), url.data(), 0, true); }),
            status);
    }
}

TEST_F(Scripts, LoadingFallsBackToTheDataFork) {
    const TemporaryFolder folder;
    COSAID script(instance);
    const std::tuple<std::string, OSAError, OSStatus, bool> rows[] = {
        {"x" + kTrailer, noErr, noErr, true},
        {kTrailer, noErr, eofErr, false},
        {"text", noErr, eofErr, false},
        {"x" + kTrailer, errOSABadStorageType, errOSABadStorageType, false}};
    for (const auto& [content, status, thrownStatus, isLoaded] : rows) {
        SCOPED_TRACE(content);
        const FSRef file = refOf(folder.write("script", content));
        component.status["load"] = status;
        bool isDataFork = false;
        EXPECT_EQ(thrown([&] { script.Load(&file, isDataFork, 0); }), thrownStatus);
        EXPECT_EQ(isDataFork, isLoaded);
        EXPECT_EQ(script.GetOSAID() != 0, isLoaded);
        EXPECT_EQ(COSAID::IsDataForkScript(&file), content.size() == 5);
    }
    component.status.clear();
    const FSRef file = refOf(folder.write("script", "y" + kTrailer));
    CAEDesc desc;
    desc.SetFileSpec(&file, typeFileURL);
    script.Load(&desc.GetDesc(), 2);
    EXPECT_NE(component.takeLog().find("load y" + kTrailer + " mode 2"), std::string::npos);
    bool storable = false;
    component.status["load"] = errOSACorruptData;
    EXPECT_EQ(thrown([&] { script.LoadFile(file, storable, 0); }), errOSACorruptData);
    EXPECT_EQ(script.GetOSAID(), 0U);
}

}  // namespace
}  // namespace osa::test
