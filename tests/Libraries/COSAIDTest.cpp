// COSAIDReader and COSAID: their slots, reading values, who disposes of what, running and lookups.
#include <CoreServices/AEObjects.h>
#include <CoreServices/Processes.h>

#include <bit>
#include <optional>
#include <random>

#include "tests/Libraries/LoggingComponent.h"

namespace osa::test {
namespace {

template <typename Function>
long slotIn(Function function) {
    return std::bit_cast<std::array<long, 2>>(function)[0] / static_cast<long>(sizeof(void*));
}
template <typename... Arguments>
long slot(void (COSAID::*function)(Arguments...)) {
    return slotIn(function);
}

TEST_F(Scripts, StayInTheirSlots) {
    using C = COSAID;
    const auto list = [](auto... slots) { return std::vector<long>{slots...}; };
    EXPECT_EQ(
        list(slot(&C::SetOSAID), slotIn(&C::HasOpenHandler), slot(&C::Set),
             slot<const FSRef*, SInt32>(&C::Load), slot<const FSRef*, bool&, SInt32>(&C::Load),
             slot<const AEDesc*, SInt32>(&C::Load), slot<const FSRef&, bool&, SInt32>(&C::LoadFile),
             slot<const FSRef&, SInt32>(&C::LoadFile), slot(&C::StoreFile), slot<C&>(&C::Aquire),
             slot<const COSAIDReader&>(&C::Aquire), slot<OSAID>(&C::Aquire),
             slot<const C&>(&C::Copy), slot<OSAID>(&C::Copy), slot(&C::Free)),
        list(2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16));
}

TEST_F(Scripts, TypesGoByWhatIsAnswered) {
    const COSAIDReader script(instance, 1);
    const auto is = [&] {
        component.log += code(script.GetType()) + (script.IsText() ? " text" : "") +
                         (script.IsFile() ? " file" : "") +
                         (script.IsMissingValue() ? " missing" : "") +
                         (script.IsUndefined() ? " undefined" : "");
    };
    const std::pair<const char*, std::vector<OSType>> rows[] = {
        {" text", {'itxt', 'TEXT', 'encs', 'STXT', 'utf8', 'utxt', 'sutx'}},
        {" file", {'fss ', 'file', 'fsrf', 'alis', 'psxf', 'furl'}},
        {"", {'scpt', 'enum', 'list', 'bool', 'null'}}};
    for (const auto& [expected, types] : rows)
        for (const OSType type : types) {
            component.info = {{'cscr', 1}, {'cntx', -1}, {'best', static_cast<SInt32>(type)}};
            EXPECT_EQ(did(is, "info 1 cntx=-1"), code(type) + expected);
        }
    const std::string twice = "get 1 **** 0; get 1 **** 0; ";
    component.info = {{'best', 'type'}};
    for (const auto& [value, log] :
         {std::pair{OSType{'msng'}, " missing"}, {'undf', " undefined"}}) {
        component.value = descOf('type', value);
        check({{is, twice + "type" + log}, {is, twice + "type", "get=-1"}});
    }
    EXPECT_FALSE(script.IsMissingValue());
    CAEDesc key = descOf('TEXT', "disk:file"), container;
    CreateObjSpecifier('file', const_cast<AEDesc*>(&container.GetDesc()), 'name',
                       const_cast<AEDesc*>(&key.GetDesc()), 0, component.value.Receive());
    component.info = {{'best', 'obj '}};
    check({{is, "get 1 **** 0; obj  file"}, {is, "get 1 **** 0; -1", "get=-1"}});
    component.logsInfo = true;
    const std::string both = "info 1 cscr; info 1 cntx; ", all = both + "info 1 best; ";
    const auto type = [&](SInt32 compiled, SInt32 context) {
        component.info = {{'cscr', compiled}, {'cntx', context}};
        return [&] { component.log += code(script.GetType()); };
    };
    const auto isNone = [&] { EXPECT_FALSE(script.IsUndefined() || script.IsMissingValue()); };
    check({{type(1, 1), all + "-1", "info 1 best=-1"}, {isNone, all + all, "info=-1"}});
    check({{type(0, 0x01000000), both + "scpt"}});
    check({{type(INT32_MIN, 0), "info 1 cscr; scpt"}});
}

TEST_F(Scripts, ValuesAreAskedForInTheirOrder) {
    const COSAIDReader script(instance, 1);
    CAEDesc desc;
    TCLString text;
    std::string bytes;
    SCoreFoundation<CFStringRef> string;
    const auto get = [&](DescType type, OSAID id = 1) {
        return [&, type, id] {
            COSAIDReader(instance, id).Get(desc, type, 0x40);
            component.log += code(desc.GetType()) + " " + dataOf(desc);
        };
    };
    const auto show = [&](DescType type) { return [&, type] { script.Display(desc, type, 5); }; };
    const auto read = [&](DescType type) { return [&, type] { script.GetSource(desc, type); }; };
    const std::string shown("display 1 utxt 72; utxt t\0e\0x\0t\0", 32);
    const std::string sources = "source 1 STXT; display 1 TEXT 0; ";
    check({{get('TEXT'), "get 1 STXT 64; TEXT text"},
           {get('TEXT'), "get 1 STXT 64; -1700", "get=-1700"},
           {get('****'), shown},
           {get('STXT'), shown},
           {get('best'), shown},
           {get('utxt'), "display 1 utxt 72; -1751", "display=-1751"},
           {get('long'), "get 1 long 64; long text"},
           {[&] { component.info['best'] = 'list', get('best')(); }, "get 1 best 64; TEXT value"},
           {get('TEXT'), "get 1 TEXT 64; -1751", "get=-1751"},
           {get('TEXT', 0), "null "},
           {show('STXT'), "display 1 STXT 5; display 1 TEXT 0; ", "display 1 STXT=-1700"},
           {show('STXT'), "display 1 STXT 5; -1751", "display=-1751"},
           {show('utxt'), "display 1 utxt 5; -1700", "display=-1700"},
           {read('best'), "source 1 STXT; source 1 TEXT; ", "source 1 STXT=-1700"},
           {read('utxt'), "source 1 utxt; -1700", "source=-1700"},
           {read('utxt'), "source 1 utxt; display 1 TEXT 0; ", "source=-1751"},
           {read('STXT'), sources + "source 1 TEXT; ", "source 1 STXT=-1751,display=-1700"},
           {read('STXT'), sources + "-1756", "source=-1751,display=-1756"},
           {[&] { script.Display(text, 1), script.GetSource(text); },
            "display 1 best 1; source 1 utxt; "},
           {[&] { script.Display(bytes, 1), script.GetSource(bytes); },
            "display 1 TEXT 1; source 1 TEXT; "},
           {[&] { script.Display(string, 1), script.GetSource(string); },
            "display 1 utxt 1; source 1 utxt; "}});
    EXPECT_TRUE(text == utf16("text") && bytes == "text" && CFEqual(string, CFSTR("text")));
    testing::internal::CaptureStderr();
    script.Get(static_cast<AEDesc*>(nullptr), typeChar, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Libraries/MacToolboxLib/COSAID:147: failed assertion `value'\n");
}

/// Logs the calls that come through the table.
class Hooked : public COSAID {
  public:
    using COSAID::COSAID, COSAID::Copy, COSAID::Load, COSAID::LoadFile;
    void Copy(OSAID id) override { note("Copy; "), COSAID::Copy(id); }
    void Load(const FSRef* f, bool& isFork, SInt32 flags) override {
        note("Flag; "), COSAID::Load(f, isFork, flags);
    }
    void Load(const FSRef* f, SInt32 flags) override { note("File; "), COSAID::Load(f, flags); }
    void Load(const AEDesc* d, SInt32 flags) override { note("Desc; "), COSAID::Load(d, flags); }
    void LoadFile(const FSRef& f, bool& storable, SInt32 flags) override {
        note("Flag; "), COSAID::LoadFile(f, storable, flags);
    }
    void Free() override { note(mID != 0 ? "Free; " : ""), COSAID::Free(); }

  private:
    static void note(const char* what) { gComponent->log += what; }
};

TEST_F(Scripts, NumbersAreReplacedThroughTheTable) {
    const FSRef file = refOf(folder.write("file", "x" + kTrailer));
    const CAEDesc text = descOf('TEXT', "a");
    const AEDesc* const desc = &text.GetDesc();
    std::optional<Hooked> one, two;
    CAEDesc value;
    const auto load = [&](DescType type) {
        return [&, type] {
            CAEDesc named = descOf(type, "a");
            if (type != 'file') named.SetFileSpec(&file, type);
            one->Load(&named.GetDesc(), 7);
        };
    };
    const auto loadFile = [&](Boolean told) {
        return [&, told] {
            component.storable = told;
            bool is = told == 0;
            one->LoadFile(file, is, 8);
            EXPECT_EQ(is, told != 0);
        };
    };
    const auto borrow = [&] {
        one->Aquire(COSAIDReader(instance, component.fresh()));
        EXPECT_EQ(one->GetComponent(), instance);
    };
    const std::string free = "Free; dispose 1; ", content = "x" + kTrailer;
    const std::string loaded = "Desc; " + free + "File; Flag; Desc; load scpt " + content + " 7; ";
    const std::string byFile = "Flag; " + free + "loadFile " + content + " 8; ";
    // One holds 1 before, two 2; what they hold afterwards comes last.
    const Row rows[] = {
        {[&] { one->SetOSAID(instance, 1); }, "1 2"},
        {[&] { one->SetOSAID(instance, component.fresh()); }, free + "3 2"},
        {[&] { one->SetOSAID(nullptr, 1); }, free + "1 2"},
        {[&] { one->SetComponent(nullptr), borrow(); }, free + "3 2"},
        {[&] { one->Set(desc); }, free + "set TEXT a 0; -1 0 2", "set=-1"},
        {[&] { one->Aquire(*two), FailOSErr(two->GetComponent() ? 9 : 0); }, free + "2 0"},
        {borrow, free + "3 2"},
        {[&] { one->Aquire(component.fresh()); }, free + "3 2"},
        {[&] { one->Copy(*two); }, "Copy; copy 2; " + free + "3 2"},
        {[&] { one->Copy(*two); }, "Copy; copy 2; -1 1 2", "copy=-1"},
        {[&] { one->Copy(OSAID{0}); }, "Copy; " + free + "0 2"},
        {[&] { one->Compile(desc, 6); }, "compile TEXT a 6 1; -1 1 2", "compile=-1"},
        {[&] { one->Free(), one->Compile(desc, 6); }, free + "compile TEXT a 6; 3 2"},
        {[&] { one->Load(desc, 7); }, "Desc; " + free + "load TEXT a 7; -1 0 2", "load=-1"},
        {load('fsrf'), loaded + "3 2"},
        {load('alis'), loaded + "3 2"},
        {load('fss '), loaded + "3 2"},
        {load('furl'), loaded + "-1 0 2", "load=-1"},
        {load('file'), "Desc; " + free + "-1700 0 2"},
        {loadFile(1), byFile + "3 2"},
        {loadFile(0), byFile + "3 2"},
        {[&] { one->LoadFile(file, 8); }, byFile + "-1 0 2", "loadFile=-1"},
        {[&] { one->StoreFile(file, 9); }, "storeFile 1 scpt 9 " + content + "; -1 1 2",
         "store=-1"},
        {[&] { one->Execute(*two, 4); }, "Free; dispose 2; execute 1 0 4; 1 3"},
        {[&] { one->Execute(*two, *one, 4); }, free + "execute 0 2 4; -1 0 2", "execute=-1"},
        {[&] { one->Execute(4); }, "execute 1 0 4; dispose 3; 1 2"},
        {[&] { one->Execute(value, 4); }, "execute 1 0 4; get 3 **** 0; dispose 3; 1 2"},
        {[&] { one->Execute(*two, value, 4); }, "execute 1 2 4; get 3 **** 0; dispose 3; 1 2"},
        {[&] { one->Execute(*two, value, 4); }, "execute 1 2 4; -1 1 2", "execute=-1"},
        {[&] { one->ExecuteEvent(desc, 4); }, "event TEXT a 1 4; dispose 3; 1 2"},
        {[&] { two->SetComponent(nullptr), one->ExecuteEvent(desc, *two, 4); },
         "Free; dispose 2; event TEXT a 1 4; -1 1 0", "event=-1"},
        {[&] { one->CallFunction("f", *two, 4); }, "Free; dispose 2; event 1 4; -1 1 0",
         "event=-1"},
        {[&] { one->CallFunction("f", value, 4); }, "event 1 4; -1 1 2", "event=-1"},
        {[&] { one->ExecuteEvent(desc, *two, 4); }, "Free; dispose 2; event TEXT a 1 4; 1 3"}};
    component.info['best'] = 'list';
    for (const Row& row : rows) {
        component.next = 1;
        for (auto* const script : {&one, &two}) script->emplace(instance).Aquire(component.fresh());
        std::string log = did(row.work, row.told);
        if (!log.empty() && !log.ends_with(' ')) log += " ";
        EXPECT_EQ(log + std::to_string(one->GetOSAID()) + " " + std::to_string(two->GetOSAID()),
                  row.log);
        one.reset(), two.reset();
    }
    EXPECT_EQ(dataOf(value), "value") << "left as it was";
}

TEST_F(Scripts, EveryNumberIsDisposedOfOnce) {
    std::minstd_rand random(1904);
    COSAID scripts[3] = {COSAID(instance), COSAID(instance), COSAID(instance)};
    const CAEDesc text = descOf('TEXT', "a");
    for (int round = 0; round < 3000; ++round) {
        COSAID &one = scripts[random() % 3], &other = scripts[random() % 3];
        const Work works[] = {[&] { one.Set(&text.GetDesc()); },
                              [&] { one.Copy(other); },
                              [&] { &one != &other ? one.Aquire(other) : one.Free(); },
                              [&] { one.Load(&text.GetDesc(), 0); },
                              [&] { one.SetOSAID(instance, one.GetOSAID()); },
                              [&] { one.SetComponent(instance); },
                              [&] { one.Compile(&text.GetDesc(), 0); },
                              [&] { one.Execute(other, 0); },
                              [&] { one.Aquire(component.fresh()); }};
        did(works[random() % 9], std::array{"set=-1", "co=-1", "load=-1", ""}[random() % 4]);
        std::size_t held = 0;
        for (COSAID& script : scripts) {
            if (script.GetComponent() == nullptr) script.SetComponent(instance);
            held += script.GetOSAID() != 0;
        }
        ASSERT_EQ(component.alive.size(), held);
    }
}

CAEDesc eventOf(AEEventClass eventClass, AEEventID id, const CAEDescReader& name = CAEDesc(),
                const CAEDescReader& list = CAEDesc()) {
    const CAEDesc self = descOf('psn ', ProcessSerialNumber{0, kCurrentProcess});
    CAEDesc event;
    AEDesc* const made = event.Receive();
    FailOSErr(AECreateAppleEvent(eventClass, id, &self.GetDesc(), 0, kAnyTransactionID, made));
    if (!name.Empty()) FailOSErr(AEPutParamDesc(made, 'snam', &name.GetDesc()));
    if (!list.Empty()) FailOSErr(AEPutParamDesc(made, '----', &list.GetDesc()));
    return event;
}

/// All of an event but its return ID.
std::string bytesOf(CAEDesc event, SInt32& returnID) {
    auto* const desc = const_cast<AEDesc*>(&event.GetDesc());
    AEGetAttributePtr(desc, 'rtid', 'long', nullptr, &returnID, sizeof returnID, nullptr);
    AEPutAttributePtr(desc, 'rtid', 'long', "none", sizeof returnID);
    std::string bytes(static_cast<std::size_t>(AESizeOfFlattenedDesc(desc)), '\0');
    AEFlattenDesc(desc, bytes.data(), static_cast<Size>(bytes.size()), nullptr);
    return bytes;
}

TEST_F(Scripts, SubroutineEventsHoldNameAndParameters) {
    const COSAIDReader script(instance, 1);
    COSAID result(instance);
    CAEDesc value;
    component.info['best'] = 'list';
    const CAEDesc a = descOf('TEXT', "a"), b = descOf('long', SInt32{2}), none;
    const CAEDesc caf = descOf('TEXT', "caf\x8E");
    const std::tuple<Work, CAEDesc, CAEDesc> rows[] = {
        {[&] { script.CallFunction("caf\x8E", result, 3); }, caf, none},
        {[&] { script.CallFunction("caf\x8E", value, a, 3); }, caf, listOf({a})},
        {[&] { script.Call("caf\x8E", b, a, 3); }, caf, listOf({b, a})},
        {[&] { script.CallFunction("caf\x8E", result, a, b, b, 3); }, caf, listOf({a, b, b})},
        {[&] { script.CallFunction("", value, a, a, b, a, 3); }, descOf('TEXT', ""),
         listOf({a, a, b, a})},
        {[&] { script.Call("caf\x8E", a, b, a, b, b, 3); }, caf, listOf({a, b, a, b, b})},
        {[&] { script.CallFunctionParamList(b, result, listOf({a}), 3); }, b, listOf({a})},
        {[&] { script.CallFunctionParamList(b, value, a, 3); }, b, a}};
    std::set<SInt32> returnIDs;
    for (int index = 0; const auto& [work, name, list] : rows) {
        SCOPED_TRACE(index);
        SInt32 returnID = 0, ignored = 0;
        EXPECT_NE(did(work).find("event 1 3; "), std::string::npos);
        EXPECT_EQ(bytesOf(component.event, returnID),
                  bytesOf(eventOf('ascr', 'psbr', name, list), ignored));
        EXPECT_TRUE(returnIDs.insert(returnID).second) << "each has one of its own";
        EXPECT_EQ(result.GetOSAID() != 0, index % 3 == 0) << "who gets the result";
        EXPECT_EQ(value.Empty(), index++ % 3 != 1);
        result.Free(), value.Free();
    }
}

TEST_F(Scripts, WrongComponentsEndTheProcess) {
    const COSAIDReader script(instance, 1);
    COSAID other(nullptr);
    EXPECT_DEATH(script.Execute(other, 0), "COSAID:1162: failed assertion `result.GetComponent");
    EXPECT_DEATH(script.Execute(other, other, 0), "COSAID:1137: failed assertion `parent.Get");
    EXPECT_DEATH(script.Execute(script, other, 0), "COSAID:1138: failed assertion `result.Get");
}

TEST_F(Scripts, NamesAreWrappedWhileTheyAreRefused) {
    const COSAIDReader script(instance, 1);
    COSAID found(instance);
    OSAID id = 0;
    for (const std::size_t length : {0, 1, 252, 253, 254, 255}) {
        const std::string name(length, 'x');
        const CAEDesc desc = descOf('TEXT', name);
        Str255 pascal = {static_cast<unsigned char>(length)};
        std::copy(name.begin(), name.end(), pascal + 1);
        // What is asked for, beginning with a name.
        const auto asked = [](const std::string& call, std::string from) {
            std::string all = call + " 0 1 TEXT " + from + "; ";
            for (; from.size() <= 253; all += call + " 0 1 TEXT " + from + "; ")
                from = "|" + from + "|";
            return all + "-50";
        };
        const std::string wrapped = length < 254 ? "|" + name + "|" : length == 254 ? "" : "|";
        check({{[&] { script.GetHandler(pascal, &id); }, asked("handler", name), "h=-50"},
               {[&] { script.GetProperty(pascal, &id); }, asked("property", name), "p=-50"},
               {[&] { script.GetProperty(&desc.GetDesc(), &id); },
                "property 0 1 TEXT " + name + "; " + asked("property", wrapped), "p=-50"}});
    }
    const unsigned char x[] = "\1x";
    const AEDesc* const desc = &CAEDesc::sTrue.GetDesc();
    const std::string once = "property 0 1 bool \1; ";
    check({{[&] { script.GetHandler(x, &id), found.Aquire(id); },
            "handler 0 1 TEXT x; handler 0 1 TEXT |x|; ", "handler 0 1 TEXT x=131022"},
           {[&] { script.GetHandler(x, &id); }, "handler 0 1 TEXT x; -1", "handler=131071"},
           {[&] { script.GetProperty(x, &id); }, "property 0 1 TEXT x; ", "property=65536"},
           {[&] { script.GetProperty(desc, &id); }, once, "property=65536"},
           {[&] { script.GetProperty(desc, &id); }, once + "-50", "property=-50"}});
}

TEST_F(Scripts, HandlersAreLookedUpByEvent) {
    component.logsInfo = true;
    const COSAIDReader script(instance, 1), nothing(instance, 0);
    const auto has = [&](OSType eventClass, OSType id, const COSAIDReader& in,
                         const CAEDesc& name = CAEDesc()) {
        return [&, in, event = eventOf(eventClass, id, name)] {
            component.log += in.HasHandler(&event.GetDesc()) ? "yes" : "no";
        };
    };
    const auto hasPrint = [&](const COSAIDReader& in) {
        return [&, in] { component.log += in.HasHandler('aevt', 'pdoc') ? "yes" : "no"; };
    };
    const std::string asked = "handler 0 1 evnt aevtpdoc; ", dropped = "dispose 1; yes";
    const CAEDesc f = descOf('utxt', "f");
    check({{has('aevt', 'oapp', nothing), "no"},
           {has('aevt', 'oapp', script), "yes"},
           {has('aevt', 'odoc', script), "info 1 hsod; no"},
           {has('aevt', 'pdoc', script), asked + dropped},
           {has('aevt', 'pdoc', script), asked + "yes", "handler=65536"},
           {has('aevt', 'pdoc', script), asked + "no", "handler=1"},
           {has('test', 'oapp', script), "handler 0 1 evnt testoapp; no", "handler=1"},
           {has('ascr', 'noop', script), "handler 0 1 evnt ascrnoop; no", "handler=1"},
           {has('ascr', 'psbr', script), "-1701"},
           {has('ascr', 'psbr', script, f), "handler 0 1 utxt f; yes", "handler=65536"},
           {[&] { component.info['hsod'] = 0x100, has('aevt', 'odoc', script)(); },
            "info 1 hsod; yes"},
           {[&] { script.HasOpenHandler(); }, "info 1 hsod; -1", "info=-1"},
           {[&] { EXPECT_FALSE(nothing.HasOpenHandler()); }, ""},
           {[&] { EXPECT_FALSE(script.HasHandler(&CAEDesc::sTrue.GetDesc())); }, ""},
           {hasPrint(nothing), "no"},
           {hasPrint(script), asked + "no", "handler=65536"},
           {[&] { component.next = 1, hasPrint(script)(); }, asked + dropped}});
}

}  // namespace
}  // namespace osa::test
