// Listing and extracting from files and from containers.
#include <OSA/ResourceListing.h>

#include "tests/support/TemporaryFolder.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa {
namespace {

std::string dataAt(OSAResourceListRef list, CFIndex index, bool expand) {
    CFRef<CFDataRef> data;
    const OSStatus status = OSAResourceListCopyData(list, index, expand, data.out());
    return status == noErr ? test::bytesOf(data.get()) : std::to_string(status);
}

TEST(ResourceListing, FindsTheResourcesWhereverTheyAre) {
    ByteWriter compressed;
    compressed.u32(0xA89F6572).u16(18).u16(0x0801).u32(3).u32(0).u16(0).text("\x02zzz!\xFF");
    const std::string packed = compressed.takeText();
    samples::ResourceForkBuilder builder;
    const std::string fork = builder.add(FourCC("TEXT"), -5, "hello", "Name")
                                 .add(FourCC("CODE"), 7, packed, nullptr, 1)
                                 .text();

    const test::TemporaryFolder folder;
    folder.write("._side", samples::wrappedFork(fork));
    const std::tuple<const char*, std::string, OSStatus> rows[] = {
        {"a file with a side file", folder.write("side", "text"), noErr},
        {"the side file itself", folder.path("._side"), noErr},
        {"AppleSingle", folder.write("single", samples::wrappedFork(fork, 0x00051600)), noErr},
        {"a bare fork", folder.write("a.rsrc", fork), noErr},
        {"no resources", folder.write("a.txt", "just text"), eofErr},
        {"nothing", folder.path("none"), fnfErr},
    };
    for (const auto& [row, path, status] : rows) {
        SCOPED_TRACE(row);
        OSAResourceListRef list = nullptr;
        ASSERT_EQ(OSAResourceListOpen(path.c_str(), &list), status);
        ASSERT_EQ(list != nullptr, status == noErr);
        if (list == nullptr) continue;
        ASSERT_EQ(OSAResourceListGetCount(list), 2);
        OSAResourceInfo info;
        ASSERT_EQ(OSAResourceListGetInfo(list, 0, &info), noErr);
        EXPECT_TRUE(info.id == -5 && info.hasName && info.name[0] == 4 && !info.compressed);
        ASSERT_EQ(OSAResourceListGetInfo(list, 1, &info), noErr);
        EXPECT_TRUE(info.compressed && !info.hasName);
        EXPECT_EQ(info.storedSize, packed.size());
        EXPECT_EQ(info.size, 3u);
        EXPECT_EQ(dataAt(list, 0, true), "hello");
        EXPECT_EQ(dataAt(list, 1, true), "zzz");
        EXPECT_EQ(dataAt(list, 1, false), packed);
        EXPECT_EQ(dataAt(list, 2, true), std::to_string(paramErr));
        OSAResourceListClose(list);
    }
}

}  // namespace
}  // namespace osa
