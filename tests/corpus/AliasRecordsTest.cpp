// Alias records of the corpus: what systems of 1991 and later wrote, read by eye and here.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <OSA/ResourceListing.h>

#include "tests/corpus/Corpus.h"

namespace osa::test {
namespace {

/// The file's only resource 'alis' as a record; null when there is none.
AliasHandle onlyAlias(const fs::path& file) {
    OSAResourceListRef list = nullptr;
    if (OSAResourceListOpen(file.c_str(), &list) != noErr) return nullptr;
    Handle alias = nullptr;
    for (CFIndex i = 0; i < OSAResourceListGetCount(list); ++i) {
        OSAResourceInfo info;
        CFDataRef data = nullptr;
        if (OSAResourceListGetInfo(list, i, &info) != noErr || info.type != 'alis') continue;
        if (OSAResourceListCopyData(list, i, 1, &data) != noErr) continue;
        PtrToHand(CFDataGetBytePtr(data), &alias, static_cast<Size>(CFDataGetLength(data)));
        CFRelease(data);
    }
    OSAResourceListClose(list);
    return reinterpret_cast<AliasHandle>(alias);
}

std::string textOf(const HFSUniStr255& name) {
    return {name.unicode, name.unicode + name.length};
}

using OldAliases = Corpus;

TEST_F(OldAliases, AreReadAsTheirNamesSay) {
    struct Row {
        const char* file;
        const char* names;
        OSType type, creator;
        UInt32 parentID, nodeID;
    };
    const Row rows[] = {
        {"Bird 1", "Macintosh HD: System", 'zsys', 'MACS', 3751, 5917},
        {"good-bad", "Seymour: System", 'zsys', 'MACS', 24704, 24709},
        {"Clipboard Magician", "Macintosh HD: Clipboard Magician DA", 'DFIL', 'DMOV', 47642, 47645},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.file);
        int count = 0;
        for (const fs::path& file : files("rsrc")) {
            if (!file.filename().string().ends_with(std::string("._") + row.file)) continue;
            ++count;
            const AliasHandle alias = onlyAlias(file);
            ASSERT_NE(alias, nullptr);
            HFSUniStr255 name{};
            HFSUniStr255 volume{};
            FSAliasInfo info{};
            FSRef target;
            EXPECT_EQ(FSCopyAliasInfo(alias, &name, &volume, nullptr, nullptr, &info), noErr);
            EXPECT_EQ(textOf(volume) + ": " + textOf(name), row.names);
            EXPECT_TRUE(info.fileType == row.type && info.fileCreator == row.creator);
            EXPECT_TRUE(info.parentDirID == row.parentID && info.nodeID == row.nodeID);
            EXPECT_EQ(FSResolveAlias(nullptr, alias, &target, nullptr), nsvErr);
            DisposeHandle(reinterpret_cast<Handle>(alias));
        }
        EXPECT_EQ(count, 1);
    }
}

}  // namespace
}  // namespace osa::test
