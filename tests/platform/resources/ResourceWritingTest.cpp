// The Resource Manager's writing calls: against a model, with failing calls, and what is refused.
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>

#include <random>

#include "tests/platform/files/FileFixture.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

struct Item {
    ResType type = 0;
    ResID id = 0;
    int attributes = 0;
    std::string name;
    std::string data;
    bool operator==(const Item&) const = default;
};
using Items = std::vector<Item>;  // in map order

std::ostream& operator<<(std::ostream& out, const Item& item) {
    return out << describeFourCC(item.type) << ' ' << item.id << ' ' << item.attributes
               << ", name of " << item.name.size() << ", data of " << item.data.size();
}

std::string content(Handle handle) {
    return {*handle, static_cast<std::size_t>(GetHandleSize(handle))};
}

void fill(Handle handle, const std::string& data) {
    SetHandleSize(handle, static_cast<Size>(data.size()));
    BlockMoveData(data.data(), *handle, static_cast<Size>(data.size()));
}

std::vector<unsigned char> pascal(const std::string& text) {
    std::vector<unsigned char> bytes(text.begin(), text.end());
    bytes.insert(bytes.begin(), static_cast<unsigned char>(text.size()));
    return bytes;
}

/// Every resource of the current file.
Items currentItems() {
    Items items;
    for (ResourceIndex t = 1; t <= Count1Types(); ++t) {
        Item item;
        Get1IndType(&item.type, t);
        for (ResourceIndex i = 1; i <= Count1Resources(item.type); ++i) {
            const Handle handle = Get1IndResource(item.type, i);
            EXPECT_NE(handle, nullptr) << ResError();
            if (handle == nullptr) continue;
            Str255 name;
            GetResInfo(handle, &item.id, nullptr, name);
            item.name.assign(name + 1, name + 1 + name[0]);
            item.attributes = GetResAttrs(handle) & ~resChanged;
            item.data = content(handle);
            items.push_back(item);
        }
    }
    return items;
}

class ResourceWriting : public FileFixture {
  protected:
    ~ResourceWriting() override {
        EXPECT_EQ(OSALiveBlockCount(), blocks_);
        EXPECT_EQ(OSAOpenFileCount(), 0);
    }
    ResFileRefNum open(SInt8 permission = fsRdWrPerm) const {
        ResFileRefNum number = 0;
        const HFSUniStr255 none{};
        HFSUniStr255 fork{};
        FSGetResourceForkName(&fork);
        if (isDataFork_) fork = none;
        FSOpenResourceFile(&file_, fork.length, fork.unicode, permission, &number);
        return number;
    }
    void start(bool isDataFork, const samples::ResourceForkBuilder& fork) {
        isDataFork_ = isDataFork;
        put("file", isDataFork ? fork.text() : "data");
        put("._file", isDataFork ? "" : samples::wrappedFork(fork.text()));
        file_ = ref("file");
    }
    /// What whoever opens the file now finds.
    Items stored() const {
        const ResFileRefNum current = CurResFile();
        const ResFileRefNum number = open(fsRdPerm);
        EXPECT_GT(number, 0) << ResError();
        const Items items = currentItems();
        CloseResFile(number);
        UseResFile(current);
        return items;
    }

    bool isDataFork_ = false;
    FSRef file_{};

  private:
    CFIndex blocks_ = OSALiveBlockCount();
};

/// Does at random to the current file and to a list what must come to the same.
class Model {
  public:
    explicit Model(unsigned seed) : random_(seed) {}

    void step() {
        const int what = items.size() > 40 ? 6 : upTo(9);
        if (items.empty() || what <= 2) return add();
        const std::size_t chosen =
            static_cast<std::size_t>(upTo(static_cast<int>(items.size()) - 1));
        Item& item = items[chosen];
        const Handle handle = handleOf(chosen);
        if ((item.attributes & resProtected) != 0) {
            RemoveResource(handle);
            EXPECT_EQ(ResError(), rmvResFailed);
            ChangedResource(handle);
            EXPECT_EQ(ResError(), resAttrErr);
            SetResInfo(handle, 1, nullptr);
            EXPECT_EQ(ResError(), resAttrErr);
            return setAttributes(item, handle);
        }
        if (what <= 5) {
            item.data = bytes();
            fill(handle, item.data);
            ChangedResource(handle);
        } else if (what == 6) {
            RemoveResource(handle);
            DisposeHandle(handle);
            items.erase(items.begin() + static_cast<std::ptrdiff_t>(chosen));
        } else if (what == 7) {
            item.id = static_cast<ResID>(upTo(0xFFFF));
            const std::string name = bytes().substr(0, 255);
            if (!name.empty()) item.name = name;
            SetResInfo(handle, item.id, pascal(name).data());
        } else {
            setAttributes(item, handle);
        }
        EXPECT_EQ(ResError(), noErr);
    }

    int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }

    Items items;

  private:
    void add() {
        Item item{FourCC("TYP0") + static_cast<ResType>(upTo(4)), static_cast<ResID>(upTo(0xFFFF)),
                  0, bytes().substr(0, 40), bytes()};
        const Handle handle = NewHandle(0);
        fill(handle, item.data);
        AddResource(handle, item.type, item.id, pascal(item.name).data());
        EXPECT_EQ(ResError(), noErr);
        if (upTo(1) == 0) setAttributes(item, handle);
        if (upTo(3) == 0) WriteResource(handle);
        auto place = std::find_if(items.rbegin(), items.rend(),
                                  [&](const Item& each) { return each.type == item.type; });
        items.insert(place == items.rend() ? items.end() : place.base(), item);
    }
    void setAttributes(Item& item, Handle handle) {
        item.attributes = upTo(0x7F) << 1 & ~resChanged;
        SetResAttrs(handle, static_cast<ResAttributes>(item.attributes));
        SetResFileAttrs(HomeResFile(handle), mapChanged);
    }
    Handle handleOf(std::size_t chosen) const {
        ResourceIndex index = 1;
        for (std::size_t i = 0; i < chosen; ++i) index += items[i].type == items[chosen].type;
        return Get1IndResource(items[chosen].type, index);
    }
    std::string bytes() {
        std::string made(static_cast<std::size_t>(upTo(upTo(upTo(3000)))), '\0');
        for (char& each : made) each = static_cast<char>(upTo(255));
        return made;
    }

    std::mt19937 random_;
};

TEST_F(ResourceWriting, KeepsWhatTheModelKeepsInBothForks) {
    for (const bool isDataFork : {false, true}) {
        start(isDataFork, samples::ResourceForkBuilder().add('TYP0', 1, "first", "name", 0x20));
        const std::string reserved(240, '\xAA');
        Model model(20260 + isDataFork);
        model.items = stored();
        open();
        for (int i = 0; i < 1500 && !HasFailure(); ++i) {
            SCOPED_TRACE("step " + std::to_string(i));
            for (int n = model.upTo(2); n >= 0; --n) model.step();
            EXPECT_EQ(currentItems(), model.items);
            if (model.upTo(2) == 0) {
                CloseResFile(CurResFile());
                EXPECT_EQ(ResError(), noErr);
                open();
                EXPECT_EQ(currentItems(), model.items);
            } else {
                UpdateResFile(CurResFile());
                EXPECT_EQ(ResError(), noErr);
            }
            EXPECT_EQ(stored(), model.items);
        }
        CloseResFile(CurResFile());
        const std::string bytes = fork(file_, isDataFork ? ForkKind::data : ForkKind::resource);
        EXPECT_EQ(bytes.substr(16, 240), reserved);
        std::size_t expected = 256 + 30;
        std::set<ResType> types;
        for (const Item& each : model.items) {
            expected += 4 + each.data.size() + 12;
            expected += each.name.empty() ? 0 : 1 + each.name.size();
            types.insert(each.type);
        }
        EXPECT_EQ(bytes.size(), expected + 8 * types.size()) << "there are holes";
    }
}

TEST_F(ResourceWriting, LeavesOldOrNewWhicheverCallFailsAndCanBeDoneAgain) {
    for (const bool isDataFork : {false, true}) {
        SCOPED_TRACE(isDataFork);
        const Items old = {{'TYP0', 1, 0, "", std::string(70000, 'o')}, {'TYP1', 2, 0x20, "n", ""}};
        const Items changed = {{'TYP0', 1, 0, "", "new"}, {'TYP0', 3, 8, "", "added"}};
        UInt32 nth = 0;
        for (UInt32 failed = 1; failed > 0; CloseResFile(CurResFile())) {
            samples::ResourceForkBuilder builder;
            for (const Item& each : old)
                builder.add(each.type, each.id, each.data, each.name.empty() ? nullptr : "n",
                            each.attributes);
            start(isDataFork, builder);
            open();
            const Handle one = Get1Resource('TYP0', 1);
            fill(one, "new");
            ChangedResource(one);
            const Handle gone = Get1Resource('TYP1', 2);
            RemoveResource(gone);
            DisposeHandle(gone);
            const Handle added = NewHandle(0);
            fill(added, "added");
            AddResource(added, 'TYP0', 3, nullptr);
            SetResAttrs(added, resProtected);
            const std::size_t descriptors = openDescriptors();
            OSAFailOperation(++nth, false);
            UpdateResFile(CurResFile());
            const OSErr status = ResError();
            failed = OSAFailedOperations();
            OSAFailOperation(0, false);
            EXPECT_EQ(stored(), status == noErr ? changed : old) << nth << " status " << status;
            EXPECT_LE(openDescriptors(), descriptors) << nth;
            EXPECT_EQ(names(), (std::set<std::string>{"file", "._file"})) << nth;
            EXPECT_EQ(currentItems(), changed) << nth;
            UpdateResFile(CurResFile());
            EXPECT_EQ(ResError(), noErr) << nth;
            EXPECT_EQ(stored(), changed) << nth;
            EXPECT_EQ(ref("file").hidden[0], file_.hidden[0]);
        }
        EXPECT_GT(nth, 10u);
    }
}

TEST_F(ResourceWriting, OneNumberForAllWhoWriteAndOneForEachReader) {
    start(false, samples::ResourceForkBuilder().add('TYP0', 1, "old"));
    const ResFileRefNum writer = open();
    for (const SInt8 permission : {fsCurPerm, fsWrPerm, fsRdWrPerm, fsRdWrShPerm})
        EXPECT_EQ(open(permission), writer);
    EXPECT_EQ(open(5), -1);
    HFSUniStr255 name;
    FSGetResourceForkName(&name);
    SInt16 forkNumber = 0;
    EXPECT_EQ(FSOpenFork(&file_, name.length, name.unicode, fsRdWrPerm, &forkNumber), opWrErr);
    const ResFileRefNum reader = open(fsRdPerm);
    EXPECT_NE(reader, writer);
    EXPECT_EQ(GetResFileAttrs(reader), mapReadOnly);
    EXPECT_EQ(GetResFileAttrs(writer), 0);

    const Handle data = NewHandle(1);
    const Handle found = Get1Resource('TYP0', 1);
    const std::function<void()> changes[] = {
        [&] { AddResource(data, 'TYP0', 2, nullptr); },
        [&] { ChangedResource(found); },
        [&] { RemoveResource(found); },
        [&] { SetResInfo(found, 2, nullptr); },
        [&] { SetResAttrs(found, 0); },
    };
    for (const auto& change : changes) {
        change();
        EXPECT_EQ(ResError(), wrPermErr);
    }
    UseResFile(writer);
    AddResource(data, 'TYP0', 2, nullptr);
    AddResource(data, 'TYP0', 3, nullptr);
    EXPECT_EQ(ResError(), addResFailed);
    DetachResource(data);
    EXPECT_EQ(ResError(), resAttrErr);
    ReleaseResource(data);
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(HomeResFile(data), writer) << "what is not written stays";
    EXPECT_EQ(stored().size(), 1u);
    WriteResource(data);
    EXPECT_EQ(stored().size(), 2u);
    DetachResource(data);
    EXPECT_EQ(ResError(), noErr);
    DisposeHandle(data);
    EXPECT_EQ(FSFlushFork(writer), noErr);
    CloseResFile(reader);
    CloseResFile(writer);
    EXPECT_EQ(FSOpenFork(&file_, name.length, name.unicode, fsRdWrPerm, &forkNumber), noErr);
    EXPECT_EQ(open(), -1);
    EXPECT_EQ(ResError(), opWrErr);
    const ResFileRefNum fallback = open(fsCurPerm);
    EXPECT_GT(fallback, 0);
    CloseResFile(fallback);
    FSCloseFork(forkNumber);
}

TEST_F(ResourceWriting, RefusesWhatWouldNotComeOutTheSameAndWhatNoMapHolds) {
    const auto withPoint = [](std::size_t fromMapStart, std::uint8_t byte) {
        const auto builder =
            samples::ResourceForkBuilder().add('TYP0', 1, "one", "name").add('TYP0', 2, "two");
        std::string fork = builder.text();
        fork[builder.mapStart() + fromMapStart] = static_cast<char>(byte);
        return fork;
    };
    const std::size_t reference = 28 + 2 + 8;
    const std::pair<const char*, std::string> rows[] = {
        {"data outside", withPoint(reference + 5, 0xFF)},
        {"a name outside", withPoint(reference + 2, 0x70)},
    };
    for (const auto& [row, fork] : rows) {
        SCOPED_TRACE(row);
        put("file", fork);
        isDataFork_ = true;
        file_ = ref("file");
        const ResFileRefNum number = open();
        fill(Get1Resource('TYP0', 2), "changed");
        ChangedResource(Get1Resource('TYP0', 2));
        UpdateResFile(number);
        EXPECT_EQ(ResError(), mapReadErr);
        EXPECT_EQ(content("file"), fork);
        SetResLoad(false);
        const Handle bad = Get1Resource('TYP0', 1);
        SetResLoad(true);
        RemoveResource(bad);
        DisposeHandle(bad);
        CloseResFile(number);
        EXPECT_EQ(ResError(), noErr);
        EXPECT_EQ(stored(), (Items{{'TYP0', 2, 0, "", "changed"}}));
    }
    const ResFileRefNum number = open();
    for (ResID id = 3; ResError() == noErr; ++id) {
        const Handle handle = NewHandleClear(1 << 20);
        AddResource(handle, 'BIG ', id, nullptr);
        WriteResource(handle);
        if (ResError() == noErr) continue;
        EXPECT_EQ(ResError(), fileBoundsErr);
        EXPECT_EQ(id, 3 + 16) << "the last may begin before, and end behind, 16 MiB";
        RemoveResource(handle);
        DisposeHandle(handle);
        break;
    }
    EXPECT_EQ(Count1Resources('BIG '), 16);
    for (ResourceIndex i = 16; i >= 1; --i) {
        const Handle handle = Get1IndResource('BIG ', i);
        RemoveResource(handle);
        DisposeHandle(handle);
    }
    ResID id = 0;
    const std::string longName(30, 'n');
    for (const bool isNamed : {true, false}) {
        for (;; ++id) {
            const Handle handle = NewHandle(0);
            AddResource(handle, 'MANY', id, pascal(isNamed ? longName : "").data());
            if (ResError() == noErr) continue;
            EXPECT_EQ(ResError(), addResFailed);
            DisposeHandle(handle);
            break;
        }
    }
    EXPECT_EQ(id, (0x7FFF - 30 - 2 * 8) / 12 - 1);
    UpdateResFile(number);
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(stored().size(), static_cast<std::size_t>(id) + 1);
    CloseResFile(number);
}

}  // namespace
}  // namespace osa::test
