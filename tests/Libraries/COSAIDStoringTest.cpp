// Scripts in files: stored in every shape and loaded again, with every fault on the way.
#include <CoreServices/Finder.h>
#include <CoreServices/MacMemory.h>

#include <new>

#include "tests/Libraries/LoggingComponent.h"
#include "tests/support/ResourceLines.h"

namespace osa::test {
namespace {

/// A file that is not there, by all that names it.
struct Place {
    Place(const TemporaryFolder& folder, const std::string& name)
        : path(folder.write("a " + name, "")),
          url(utf16("file://" + folder.path("a%20" + name) + "more")) {
        const FSRef file = refOf(path);
        FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr, &leaf, &spec, &parent);
        fs::remove(path);
    }
    UInt16 length() const { return static_cast<UInt16>(url.size() - 4); }

    std::string path;
    TCLString url;
    FSRef parent;
    HFSUniStr255 leaf;
    FSSpec spec;
};

void store(ComponentInstance instance, bool isFork, int by, const Place& at, bool withSource) {
    const COSAIDReader script(instance, 1);
    const FSRef file = by == 3 ? refOf(at.path) : FSRef();
    const auto length = at.length();
    if (isFork && by == 0) script.StoreDF(length, at.url.data(), 'ToyS', withSource);
    if (isFork && by == 1) script.StoreDF(&at.parent, &at.leaf, 'ToyS', withSource);
    if (isFork && by == 2) script.StoreDF(&at.spec, 'ToyS', withSource);
    if (isFork && by == 3) script.StoreDF(&file, withSource);
    if (!isFork && by == 0) script.Store(length, at.url.data(), 'ToyS', withSource);
    if (!isFork && by == 1) script.Store(&at.parent, &at.leaf, 'ToyS', withSource);
    if (!isFork && by == 2) script.Store(&at.spec, 'ToyS', withSource);
    if (!isFork && by == 3) script.Store(&file, withSource);
}

/// Its resources, its data, its type and creator and what else the Finder knows.
std::string stateOf(bool isFork, const std::string& path) {
    std::string all;
    for (const auto& line : isFork ? Lines() : resourceLines(path)) all += line + "; ";
    const FinderInfo info = specOf(path).GetFinderInfo();
    const int more = info.fdFlags | info.fdLocation.h | info.fdLocation.v | info.fdFldr;
    return all + contentOf(path) + " " + code(info.fdType) + code(info.fdCreator) +
           (more != 0 ? "?" : "");
}

TEST_F(Scripts, AreStoredInEightShapes) {
    for (int shape = 0; shape < 8; ++shape) {
        SCOPED_TRACE(shape);
        const bool isFork = shape >= 4;
        const int by = shape % 4;
        const Place at(folder, std::to_string(shape));
        const auto stores = [&](bool withSource, const std::string& bytes, const char* told = "") {
            component.stored = bytes;
            return did([&] { store(instance, isFork, by, at, withSource); }, told);
        };
        if (by == 3) store(instance, isFork, 1, at, true);
        EXPECT_EQ(stores(true, "a longer script"), "store 1 scpt 0; ");
        EXPECT_EQ(stateOf(isFork, at.path), std::string(isFork ? "" : "scpt 128 0 ") +
                                                "a longer script" + (isFork ? "" : "; ") +
                                                " osasToyS");
        const FSRef file = refOf(at.path);
        const auto change = [&](const Work& work) {
            UseResFile(FSOpenResFile(&file, fsRdWrPerm));
            work();
            CloseResFile(CurResFile());
            UseResFile(files[0]);
        };
        if (!isFork) change([] { AddResource(NewHandle(0), 'TEXT', 128, nullptr); });
        EXPECT_EQ(stores(false, "short"), "store 1 scpt 1; ");
        const std::string held =
            isFork ? "short osasToyS" : "TEXT 128 0 ; scpt 128 0 short;  osasToyS";
        EXPECT_EQ(stateOf(isFork, at.path), held) << "in place of the other script alone";
        EXPECT_EQ(stores(true, "none", "store=-1756"), "store 1 scpt 0; -1756");
        EXPECT_EQ(stateOf(isFork, at.path), held) << "not yet removed";
        if (isFork) continue;
        change([] {
            SetResAttrs(Get1Resource('scpt', 128), resProtected);
            SetResFileAttrs(CurResFile(), mapChanged);
        });
        EXPECT_EQ(stores(true, "x"), "store 1 scpt 0; -196") << "it is protected";
        EXPECT_NE(stateOf(isFork, at.path).find("short"), std::string::npos);
        FSDeleteObject(&file);
        std::ofstream(at.path) << "data";
        EXPECT_EQ(stores(true, "s"), by == 3 ? "-39" : "store 1 scpt 0; ");
        EXPECT_EQ(contentOf(at.path), "data");
    }
}

TEST_F(Scripts, FaultsWhileStoringLeaveNothingOpen) {
    for (const auto& [isFork, by] : {std::pair{false, 0}, {false, 2}, {true, 0}, {true, 2}}) {
        const Place at(folder, std::to_string(by) + (isFork ? "d" : "r"));
        std::string state;
        const auto work = [&, isFork = isFork, by = by] {
            component.stored = "new!";
            store(instance, isFork, by, at, true);
        };
        const auto restore = [&, isFork = isFork] {
            component.stored = "longer old!";
            if (state.find("old!") == std::string::npos) store(instance, isFork, 1, at, true);
        };
        restore();
        failEach(work, [&, isFork = isFork](OSStatus status, bool hasFailed) {
            state = stateOf(isFork, at.path);
            const bool isNew = state.find("new!") != std::string::npos;
            EXPECT_FALSE(isNew && state.find("old!") != std::string::npos) << state;
            EXPECT_TRUE((isNew && !(isFork && hasFailed)) || status != noErr) << "is not told";
            restore();
        });
    }
}

TEST_F(Scripts, PlacesThatCannotBeAreRefused) {
    const COSAIDReader script(instance, 1);
    const std::string longName(256, 'x');
    const std::pair<std::string, OSStatus> rows[] = {
        {"%", memFullErr},
        {"mailto:nobody", fnfErr},
        {"file:///nowhere/at%20all", memFullErr},
        {"file:///nowhere/" + longName, memFullErr},
        {"file://" + folder.path(longName), errFSNameTooLong}};
    for (const auto& [text, status] : rows) {
        const TCLString url = utf16(text);
        const auto length = static_cast<UInt16>(url.size());
        EXPECT_EQ(thrown([&] { script.Store(length, url.data(), 0, true); }), status) << text;
        EXPECT_EQ(thrown([&] { script.StoreDF(length, url.data(), 0, true); }), status) << text;
    }
    const Place at(folder, "folder");
    fs::create_directory(at.path);
    check({{[&] { script.Store(&parent, nullptr, 'ToyS', true); }, "-50"},
           {[&] { script.StoreDF(&parent, nullptr, 'ToyS', true); }, "-50"},
           {[&] { script.StoreDF(&parent, &at.leaf, 'ToyS', true); }, "-1302"},
           {[&] { script.StoreDF(&at.spec, 'ToyS', true); }, "-1302"}});
}

/// Fails at first, otherwise than by a status.
class Exhausted : public COSAID {
  public:
    using COSAID::COSAID, COSAID::Load;
    void Load(const AEDesc*, SInt32) override {
        if (!std::exchange(hasFailed_, true)) throw std::bad_alloc();
    }

  private:
    bool hasFailed_ = false;
};

TEST_F(Scripts, LoadingFallsBackToTheDataFork) {
    const std::string fork = "x" + kTrailer;
    const std::string res = "load scpt res 9; ", data = "load scpt " + fork + " 9; ";
    const char* const noFork = nullptr;
    // The resource, empty for none in its fork; the data fork; the log, and what is told.
    const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
        {"res", fork, res, ""},
        {noFork, fork, data, ""},
        {"", fork, data, ""},
        {"res", fork, res + data, "load scpt r=-1758"},
        {noFork, kTrailer, "-39", ""},
        {noFork, "x\xFA\xDE\xDE\xAF", "-39", ""},
        {noFork, kTrailer + "x", "-39", ""},
        {"", "text", "-192", ""},
        {"res", "text", res + "-1758", "load=-1758"},
        {"res", fork, res + data + "-1752", "load scpt r=-1758,load scpt x=-1752"}};
    for (int index = 0; const auto& [resource, content, log, told] : rows) {
        SCOPED_TRACE(index);
        const Place at(folder, std::to_string(index++));
        component.stored = "res";
        if (resource != noFork && *resource != 0) store(instance, false, 1, at, true);
        if (resource != noFork && *resource == 0)
            FSCreateResFile(&parent, at.leaf.length, at.leaf.unicode, 0, nullptr, nullptr, nullptr);
        std::ofstream(at.path) << content;
        const FSRef file = refOf(at.path);
        const bool isLoaded = log.ends_with("; ");
        for (const bool before : {false, true}) {
            COSAID script(instance);
            bool isDataFork = before;
            EXPECT_EQ(did([&] { script.Load(&file, isDataFork, 9); }, told), log);
            EXPECT_EQ(isDataFork, isLoaded ? log.ends_with(data) : before);
            EXPECT_EQ(script.GetOSAID() != 0, isLoaded);
        }
        EXPECT_EQ(COSAID::IsDataForkScript(&file), content == fork);
        component.told = told + ",";
        failEach([&] { COSAID(instance).Load(&file, 9); }, [](OSStatus, bool) {});
        component.told.clear();
        if (log.starts_with(res)) {
            EXPECT_THROW(Exhausted(instance).Load(&file, 0), std::bad_alloc) << "no fallback";
        }
    }
}

}  // namespace
}  // namespace osa::test
