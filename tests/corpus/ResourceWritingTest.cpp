// Every resource fork of the corpus written anew: what was not changed stays as it was.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>
#include <OSA/ResourceListing.h>

#include <cstring>
#include <map>

#include "tests/corpus/Corpus.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

struct Stored {
    OSAResourceInfo info;
    std::string data;

    bool operator==(const Stored& other) const {
        // The mark of changed data is left over in some files and means nothing there.
        const auto key = [](const Stored& each) {
            return std::tuple(each.info.type, each.info.id, each.info.attributes & ~resChanged,
                              each.info.hasName,
                              std::string(each.info.name, each.info.name + 1 + each.info.name[0]));
        };
        return key(*this) == key(other) && data == other.data;
    }
};

std::vector<Stored> storedIn(const std::string& path) {
    OSAResourceListRef list = nullptr;
    EXPECT_EQ(OSAResourceListOpen(path.c_str(), &list), noErr) << path;
    std::vector<Stored> all(static_cast<std::size_t>(OSAResourceListGetCount(list)));
    for (std::size_t i = 0; i < all.size(); ++i) {
        CFDataRef data = nullptr;
        EXPECT_EQ(OSAResourceListGetInfo(list, static_cast<CFIndex>(i), &all[i].info), noErr);
        EXPECT_EQ(OSAResourceListCopyData(list, static_cast<CFIndex>(i), false, &data), noErr);
        const auto* const bytes = reinterpret_cast<const char*>(CFDataGetBytePtr(data));
        all[i].data.assign(bytes, static_cast<std::size_t>(CFDataGetLength(data)));
        CFRelease(data);
    }
    OSAResourceListClose(list);
    return all;
}

ResFileRefNum openForWriting(const std::string& path) {
    FSRef ref{};
    ResFileRefNum number = -1;
    FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr);
    number = FSOpenResFile(&ref, fsRdWrPerm);
    if (number <= 0) FSOpenResourceFile(&ref, 0, nullptr, fsRdWrPerm, &number);
    return number;
}

/// Gives the first resource of the current file other data, and tells `expected`.
void changeFirst(Stored& expected) {
    expected.data = "changed " + expected.data.substr(0, 10);
    expected.info.attributes &= static_cast<UInt8>(~(resProtected | 0x01));
    SetResLoad(false);
    const Handle handle = Get1IndResource(expected.info.type, 1);
    SetResLoad(true);
    SetHandleSize(handle, static_cast<Size>(expected.data.size()));
    std::memcpy(*handle, expected.data.data(), expected.data.size());
    SetResAttrs(handle, expected.info.attributes);
    ChangedResource(handle);
}

using WrittenResources = Corpus;

TEST_F(WrittenResources, StayAsTheyWereButForTheOneThatIsChanged) {
    const TemporaryFolder folder;
    const Resources before;
    std::map<std::string, int> count;
    for (const fs::path& file : files("")) {
        SCOPED_TRACE(file);
        std::ifstream in(file, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        const bool isSideFile = bytes.starts_with(std::string("\0\5\x16\7", 4));
        const std::string path = folder.write("copy", isSideFile ? "" : bytes);
        for (const bool asSideFile : {false, true}) {
            if (asSideFile) {
                folder.write("copy", "data");
                folder.write("._copy", isSideFile ? bytes : samples::wrappedFork(bytes));
            }
            const ResFileRefNum number = openForWriting(path);
            if (number <= 0) continue;
            std::vector<Stored> expected = storedIn(path);
            SetResFileAttrs(number, mapChanged);
            UpdateResFile(number);
            EXPECT_EQ(ResError(), noErr);
            EXPECT_TRUE(storedIn(path) == expected);
            if (!expected.empty()) changeFirst(expected.front());
            CloseResFile(number);
            EXPECT_EQ(ResError(), noErr);
            EXPECT_TRUE(storedIn(path) == expected);
            ++count[asSideFile ? "side files" : "data forks"];
        }
        fs::remove(folder.path("._copy"));
    }
    EXPECT_EQ(count, (std::map<std::string, int>{{"data forks", 92}, {"side files", 172}}));
    EXPECT_EQ(Resources(), before);
}

}  // namespace
}  // namespace osa::test
