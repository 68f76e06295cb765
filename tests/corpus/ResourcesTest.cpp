// Every resource of the corpus through the listing, and every fork written anew: what was not
// changed stays as it was.
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>
#include <OSA/ResourceListing.h>

#include "tests/corpus/Corpus.h"
#include "tests/support/ResourceLines.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

using ResourceList = std::shared_ptr<struct OSAResourceList>;
using ListedResources = Corpus;

OSStatus openList(const fs::path& file, ResourceList& list) {
    OSAResourceListRef opened = nullptr;
    const OSStatus status = OSAResourceListOpen(file.c_str(), &opened);
    list.reset(opened, OSAResourceListClose);
    EXPECT_EQ(opened != nullptr, status == noErr);
    return status;
}

CFRef<CFDataRef> dataOf(const ResourceList& list, CFIndex index, const OSAResourceInfo& info) {
    CFDataRef data = nullptr;
    EXPECT_EQ(OSAResourceListCopyData(list.get(), index, true, &data), noErr);
    EXPECT_EQ(data == nullptr ? -1 : CFDataGetLength(data), CFIndex{info.size});
    return CFRef<CFDataRef>::Adopt(data);
}

OSAResourceInfo infoOf(const ResourceList& list, CFIndex index) {
    OSAResourceInfo info{};
    EXPECT_EQ(OSAResourceListGetInfo(list.get(), index, &info), noErr);
    EXPECT_EQ(info.status, noErr);
    return info;
}

TEST_F(ListedResources, AreAllThereInWhateverKeepsThem) {
    std::map<OSStatus, int> statuses;
    std::map<std::string, CFIndex> references;
    const Resources before;
    for (const fs::path& file : files("")) {
        SCOPED_TRACE(file);
        ResourceList list;
        ++statuses[openList(file, list)];
        const CFIndex count = OSAResourceListGetCount(list.get());
        for (CFIndex i = 0; i < count; ++i) dataOf(list, i, infoOf(list, i));
        references[*fs::relative(file, root_).begin()] += count;
    }
    EXPECT_EQ(statuses, (std::map<OSStatus, int>{{noErr, 231}, {eofErr, 733}}));
    EXPECT_EQ(references["rsrc"], 13567);
    EXPECT_EQ(references["bundles"], 64);
    EXPECT_EQ(Resources(), before);
}

TEST_F(ListedResources, ExpandToWhatTheyWereBeforeTheyWereCompressed) {
    const std::string mark = "__compressed__";
    int compared = 0;
    for (const fs::path& file : files("rsrc")) {
        std::string twin = file;
        const std::size_t place = twin.find(mark);
        if (place == twin.npos) continue;
        SCOPED_TRACE(file);
        ResourceList compressed, plain;
        ASSERT_EQ(openList(file, compressed), noErr);
        ASSERT_EQ(openList(twin.replace(place, mark.size(), "__uncompressed__"), plain), noErr);
        std::map<std::pair<ResType, SInt16>, CFRef<CFDataRef>> expected;
        for (CFIndex i = 0; i < OSAResourceListGetCount(plain.get()); ++i) {
            const OSAResourceInfo info = infoOf(plain, i);
            EXPECT_FALSE(info.compressed);
            expected[{info.type, info.id}] = dataOf(plain, i, info);
        }
        for (CFIndex i = 0; i < OSAResourceListGetCount(compressed.get()); ++i) {
            const OSAResourceInfo info = infoOf(compressed, i);
            if (!info.compressed) continue;
            const auto before = expected.find({info.type, info.id});
            ASSERT_NE(before, expected.end()) << info.id;
            EXPECT_TRUE(CFEqual(dataOf(compressed, i, info).get(), before->second.get()))
                << info.id;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 542);
}

ResFileRefNum openForWriting(const std::string& path) {
    const FSRef ref = refOf(path);
    ResFileRefNum number = FSOpenResFile(&ref, fsRdWrPerm);
    if (number <= 0) FSOpenResourceFile(&ref, 0, nullptr, fsRdWrPerm, &number);
    return number;
}

/// Other data for the first resource of the current file.
void changeFirst() {
    ResType type = 0;
    Get1IndType(&type, 1);
    SetResLoad(false);
    const Handle handle = Get1IndResource(type, 1);
    SetResLoad(true);
    SetHandleSize(handle, 7);
    std::memcpy(*handle, "changed", 7);
    SetResAttrs(handle, 0);
    ChangedResource(handle);
}

using WrittenResources = Corpus;

TEST_F(WrittenResources, StayAsTheyWereButForTheOneThatIsChanged) {
    const TemporaryFolder folder;
    const Resources before;
    int dataForks = 0, sideFiles = 0;
    for (const fs::path& file : files("")) {
        SCOPED_TRACE(file);
        const std::string bytes = contentOf(file);
        const bool isSideFile = bytes.starts_with(std::string("\0\5\x16\7", 4));
        const std::string path = folder.write("copy", isSideFile ? "" : bytes);
        for (int* const count : {&dataForks, &sideFiles}) {
            if (count == &sideFiles) {
                folder.write("copy", "data");
                folder.write("._copy", isSideFile ? bytes : samples::wrappedFork(bytes));
            }
            const ResFileRefNum number = openForWriting(path);
            if (number <= 0) continue;
            ++*count;
            Lines expected = resourceLines(path);
            SetResFileAttrs(number, mapChanged);
            UpdateResFile(number);
            EXPECT_EQ(ResError(), noErr);
            EXPECT_TRUE(resourceLines(path) == expected);
            if (!expected.empty()) changeFirst();
            CloseResFile(number);
            EXPECT_EQ(ResError(), noErr);
            Lines changed = resourceLines(path);
            EXPECT_TRUE(expected.empty() || changed.front().ends_with("changed"));
            if (!expected.empty()) expected.front() = changed.front();
            EXPECT_TRUE(changed == expected);
        }
        fs::remove(folder.path("._copy"));
    }
    EXPECT_EQ(dataForks, 92);
    EXPECT_EQ(sideFiles, 172);
    EXPECT_EQ(Resources(), before);
}

}  // namespace
}  // namespace osa::test
