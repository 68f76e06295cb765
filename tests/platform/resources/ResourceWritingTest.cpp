// The Resource Manager's writing calls: against a model, with failing calls, and what is refused.
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>

#include <random>

#include "tests/platform/files/FileFixture.h"
#include "tests/support/ResourceLines.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

constexpr ResType kType = FourCC("TYP0");

void fill(Handle handle, const std::string& data) {
    SetHandleSize(handle, static_cast<Size>(data.size()));
    BlockMoveData(data.data(), *handle, static_cast<Size>(data.size()));
}

OSErr add(ResType type, ResID id, const std::string& name, const std::string& data) {
    const Handle handle = NewHandle(0);
    fill(handle, data);
    const std::string pascal = static_cast<char>(name.size()) + name;
    AddResource(handle, type, id, reinterpret_cast<const UInt8*>(pascal.data()));
    const OSErr status = ResError();
    if (status != noErr) DisposeHandle(handle);
    return status;
}

void change(Handle handle, const std::string& data) {
    fill(handle, data);
    ChangedResource(handle);
}

void removeUnloaded(ResType type, ResourceIndex index) {
    SetResLoad(false);
    const Handle handle = Get1IndResource(type, index);
    SetResLoad(true);
    RemoveResource(handle);
    DisposeHandle(handle);
}

class ResourceWriting : public FileFixture {
  protected:
    ResFileRefNum open(SInt8 permission = fsRdWrPerm) const {
        ResFileRefNum number = FSOpenResFile(&file_, permission);
        if (isDataFork_) FSOpenResourceFile(&file_, 0, nullptr, permission, &number);
        return number;
    }
    void start(bool isDataFork, const std::string& fork) {
        isDataFork_ = isDataFork;
        put("file", isDataFork ? fork : "data");
        put("._file", isDataFork ? "" : samples::wrappedFork(fork));
        file_ = ref("file");
    }
    Lines stored() const { return resourceLines(at("file")); }

    const NoLeaks leaks_;
    bool isDataFork_ = false;
    FSRef file_{};
};

/// Does at random to the current file and to a list what must come to the same.
class Model {
  public:
    explicit Model(unsigned seed) : random_(seed) {}

    void step() {
        const std::size_t what = items_.size() > 40 ? 6 : upTo(9);
        if (items_.empty() || what <= 2) return addOne();
        const std::size_t chosen = upTo(items_.size() - 1);
        Item& item = items_[chosen];
        ResourceIndex index = 1;
        for (std::size_t i = 0; i < chosen; ++i) index += items_[i].type == item.type;
        const Handle handle = Get1IndResource(item.type, index);
        const bool isBarred = (item.attributes & resProtected) != 0;
        OSErr expected = noErr;
        if (what <= 5) {
            ChangedResource(handle);
            expected = isBarred ? resAttrErr : noErr;
            if (!isBarred) fill(handle, item.data = bytes(3000));
        } else if (what == 6) {
            RemoveResource(handle);
            expected = isBarred ? rmvResFailed : noErr;
        } else if (what == 7) {
            const std::string name = bytes(255);
            const std::string pascal = static_cast<char>(name.size()) + name;
            const auto id = static_cast<ResID>(upTo(0xFFFF));
            SetResInfo(handle, id, reinterpret_cast<const UInt8*>(pascal.data()));
            expected = isBarred ? resAttrErr : noErr;
            if (!isBarred) item.id = id;
            if (!isBarred && !name.empty()) item.name = name;
        }
        EXPECT_EQ(ResError(), expected);
        if (what > 7 || isBarred) {
            item.attributes = static_cast<int>(upTo(0x7F)) << 1 & ~resChanged;
            WriteResource(handle);  // once it is protected its new data is not written
            SetResAttrs(handle, static_cast<ResAttributes>(item.attributes));
            SetResFileAttrs(HomeResFile(handle), mapChanged);
        } else if (what == 6) {
            DisposeHandle(handle);
            items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(chosen));
        }
    }

    std::size_t upTo(std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(random_);
    }
    Lines lines() const {
        Lines lines;
        for (const Item& item : items_)
            lines.push_back(fourCCBytes(item.type) + ' ' + std::to_string(item.id) + ' ' +
                            std::to_string(item.attributes) + ' ' +
                            (item.name.empty() ? "" : '\'' + item.name + "' ") + item.data);
        return lines;
    }

  private:
    struct Item {
        ResType type;
        ResID id;
        std::string name, data;
        int attributes = 0;
    };

    void addOne() {
        const Item item{kType + static_cast<ResType>(upTo(4)), static_cast<ResID>(upTo(0xFFFF)),
                        bytes(40), bytes(3000)};
        EXPECT_EQ(add(item.type, item.id, item.name, item.data), noErr);
        if (upTo(3) == 0) WriteResource(Get1IndResource(item.type, Count1Resources(item.type)));
        const auto place = std::find_if(items_.rbegin(), items_.rend(),
                                        [&](const Item& each) { return each.type == item.type; });
        items_.insert(place == items_.rend() ? items_.end() : place.base(), item);
    }
    std::string bytes(std::size_t most) {
        std::string made(upTo(upTo(most)), '\0');
        for (char& each : made) each = static_cast<char>(upTo(255));
        return made;
    }

    std::mt19937 random_;
    std::vector<Item> items_;
};

TEST_F(ResourceWriting, KeepsWhatTheModelKeepsInBothForks) {
    for (const bool isDataFork : {false, true}) {
        start(isDataFork, samples::ResourceForkBuilder().add('gone', 1, "first").text());
        Model model(20260 + isDataFork);
        open();
        removeUnloaded('gone', 1);
        for (int i = 0; i < 600 && !HasFailure(); ++i) {
            SCOPED_TRACE("step " + std::to_string(i));
            for (std::size_t n = model.upTo(2) + 1; n > 0; --n) model.step();
            const bool isClosed = model.upTo(2) == 0;
            isClosed ? CloseResFile(CurResFile()) : UpdateResFile(CurResFile());
            EXPECT_EQ(ResError(), noErr);
            EXPECT_TRUE(stored() == model.lines());
            if (isClosed) open();
        }
        CloseResFile(CurResFile());
        open();
        ResType type = 0;
        for (Get1IndType(&type, 1); type != 0; Get1IndType(&type, 1)) {
            SetResAttrs(Get1IndResource(type, 1), 0);
            removeUnloaded(type, 1);
        }
        CloseResFile(CurResFile());
        const std::string bytes = fork(file_, isDataFork ? ForkKind::data : ForkKind::resource);
        EXPECT_EQ(bytes.size(), 286u) << "nothing is left over";
        EXPECT_EQ(bytes.substr(16, 240), std::string(240, '\xAA'));
    }
}

TEST_F(ResourceWriting, LeavesOldOrNewWhicheverCallFailsAndCanBeDoneAgain) {
    const std::string large(70000, 'o');
    const Lines old = {"TYP0 1 0 " + large, "gone 2 32 'n' "};
    const Lines changed = {"TYP0 1 0 new", "TYP0 3 8 added"};
    for (const int kind : {0, 1, 2, 3}) {
        UInt32 nth = 0;
        for (UInt32 failed = 1; failed > 0; CloseResFile(CurResFile())) {
            SCOPED_TRACE("kind " + std::to_string(kind) + ", call " + std::to_string(++nth));
            samples::ResourceForkBuilder builder;
            start(kind % 2 > 0, builder.add(kType, 1, large).add('gone', 2, "", "n", 0x20).text());
            open();
            change(Get1Resource(kType, 1), "new");
            removeUnloaded('gone', 1);
            add(kType, 3, "", "added");
            SetResAttrs(Get1Resource(kType, 3), resProtected);
            const std::size_t descriptors = openDescriptors();
            failed = failing(nth, kind > 1, [] { UpdateResFile(CurResFile()); });
            const OSErr status = ResError();
            EXPECT_TRUE(stored() == (status == noErr ? changed : old)) << status;
            EXPECT_LE(openDescriptors(), descriptors);
            EXPECT_EQ(names(), (std::set<std::string>{"file", "._file"}));
            UpdateResFile(CurResFile());
            EXPECT_EQ(ResError(), noErr);
            EXPECT_EQ(stored(), changed);
        }
        EXPECT_GT(nth, 10u);
    }
}

TEST_F(ResourceWriting, OneNumberForAllWhoWriteAndOneForEachReader) {
    start(false, samples::ResourceForkBuilder().add(kType, 1, "old").text());
    const ResFileRefNum writer = open();
    for (const SInt8 permission : {fsCurPerm, fsWrPerm, fsRdWrPerm, fsRdWrShPerm})
        EXPECT_EQ(open(permission), writer);
    EXPECT_EQ(open(5), -1);
    HFSUniStr255 name;
    FSGetResourceForkName(&name);
    SInt16 forkNumber = 0;
    EXPECT_EQ(FSOpenFork(&file_, name.length, name.unicode, fsRdWrPerm, &forkNumber), opWrErr);
    const ResFileRefNum reader = open(fsRdPerm);
    EXPECT_EQ(GetResFileAttrs(reader), mapReadOnly);
    const Handle found = Get1Resource(kType, 1);
    const std::function<void()> changes[] = {
        [] { add(kType, 2, "", ""); },  [&] { ChangedResource(found); },
        [&] { RemoveResource(found); }, [&] { SetResInfo(found, 2, nullptr); },
        [&] { SetResAttrs(found, 0); },
    };
    for (const auto& each : changes) {
        each();
        EXPECT_EQ(ResError(), wrPermErr);
    }
    CloseResFile(reader);
    UseResFile(writer);
    EXPECT_EQ(add(kType, 2, "", "b"), noErr);
    const Handle added = Get1Resource(kType, 2);
    AddResource(added, kType, 3, nullptr);
    EXPECT_EQ(ResError(), addResFailed);
    DetachResource(added);
    EXPECT_EQ(ResError(), resAttrErr);
    ReleaseResource(added);
    EXPECT_EQ(HomeResFile(added), writer) << "what is not written stays";
    EXPECT_EQ(stored().size(), 1u);
    WriteResource(added);
    EXPECT_EQ(stored().size(), 2u);
    EXPECT_EQ(FSFlushFork(writer), noErr);
    change(added, "late");
    SetResAttrs(added, resProtected);
    UpdateResFile(writer);
    EXPECT_EQ(stored().back(), "TYP0 2 8 b") << "the map alone";
    SetResAttrs(added, 0);
    CloseResFile(writer);
    EXPECT_EQ(stored().back(), "TYP0 2 0 late");
    EXPECT_EQ(FSOpenFork(&file_, name.length, name.unicode, fsRdWrPerm, &forkNumber), noErr);
    EXPECT_EQ(open(), -1);
    EXPECT_EQ(ResError(), opWrErr);
    CloseResFile(open(fsCurPerm));
    EXPECT_EQ(ResError(), noErr);
    FSCloseFork(forkNumber);
}

TEST_F(ResourceWriting, FollowsItsFileAndNotItsOtherNames) {
    for (const bool isDataFork : {false, true}) {
        start(isDataFork, samples::ResourceForkBuilder().add(kType, 1, "old").text());
        fs::create_hard_link(at("file"), at("link"));
        put("._link", content("._file"));
        const ResFileRefNum writer = open();
        std::jthread renaming([&](const std::stop_token& stop) {
            for (UniChar name = 'a'; !stop.stop_requested(); name ^= 'a' ^ 'b')
                FSRenameUnicode(&file_, 1, &name, 0, &file_);
        });
        for (int i = 0; i < 100; ++i) {
            change(Get1Resource(kType, 1), std::to_string(i));
            UpdateResFile(writer);
            EXPECT_EQ(ResError(), noErr) << i;
        }
        renaming = {};
        EXPECT_EQ(open(), writer) << "known by its new name";
        FSDeleteObject(&file_);
        file_ = ref("link");
        EXPECT_EQ(open() == writer, isDataFork);
        EXPECT_EQ(resourceLines(at("link")), Lines{isDataFork ? "TYP0 1 0 99" : "TYP0 1 0 old"});
        while (CurResFile() > 0) CloseResFile(CurResFile());
        FSDeleteObject(&file_);
    }
}

TEST_F(ResourceWriting, RefusesWhatWouldNotComeOutTheSameAndWhatNoMapHolds) {
    for (const std::size_t field : {2, 5}) {  // the offsets of a name and of data
        samples::ResourceForkBuilder builder;
        std::string fork = builder.add(kType, 1, "one", "name").add(kType, 2, "two").text();
        fork[builder.mapStart() + 38 + field] = '\x70';
        start(true, fork);
        open();
        change(Get1Resource(kType, 2), "changed");
        UpdateResFile(CurResFile());
        EXPECT_EQ(ResError(), mapReadErr);
        EXPECT_EQ(content("file"), fork);
        removeUnloaded(kType, 1);
        CloseResFile(CurResFile());
        EXPECT_EQ(stored(), (Lines{"TYP0 2 0 changed"}));
    }
    open();
    OSErr status = noErr;
    ResID id = 0;
    for (; status == noErr; ++id) {
        EXPECT_EQ(add('BIG ', id, "", std::string(1 << 20, 'b')), noErr);
        WriteResource(Get1Resource('BIG ', id));
        status = ResError();
    }
    EXPECT_EQ(status, fileBoundsErr);
    EXPECT_EQ(id, 17) << "the last may begin before, and end behind, 16 MiB";
    while (Count1Resources('BIG ') > 0) removeUnloaded('BIG ', 1);
    for (id = 0; add('MANY', id, std::string(30, 'n'), "") == noErr;) ++id;
    while (add('MANY', id, "", "") == noErr) ++id;
    EXPECT_EQ(ResError(), addResFailed);
    EXPECT_EQ(id, (0x7FFF - 30 - 2 * 8) / 12 - 1);
    UpdateResFile(CurResFile());
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(stored().size(), static_cast<std::size_t>(id) + 1);
    CloseResFile(CurResFile());
}

}  // namespace
}  // namespace osa::test
