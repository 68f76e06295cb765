// Alias records of the corpus: what systems of 1991 and later wrote, read by eye and here.
#include <CoreServices/Aliases.h>
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

using OldAliases = Corpus;

TEST_F(OldAliases, AreReadAsTheirNamesSay) {
    std::set<std::string> told;
    for (const fs::path& file : files("rsrc")) {
        const AliasHandle alias = onlyAlias(file);
        if (alias == nullptr) continue;
        HFSUniStr255 name{}, volume{};
        FSAliasInfo info{};
        FSRef target;
        EXPECT_EQ(FSCopyAliasInfo(alias, &name, &volume, nullptr, nullptr, &info), noErr);
        EXPECT_EQ(FSResolveAlias(nullptr, alias, &target, nullptr), nsvErr);
        told.insert(std::string(volume.unicode, volume.unicode + volume.length) + ":" +
                    std::string(name.unicode, name.unicode + name.length) + " " +
                    std::to_string(info.nodeID) + (info.fileType == 'zsys' ? " zsys" : ""));
        DisposeHandle(reinterpret_cast<Handle>(alias));
    }
    EXPECT_EQ(told, (std::set<std::string>{"Macintosh HD:Clipboard Magician DA 47645",
                                           "Macintosh HD:System 5917 zsys",
                                           "Seymour:System 24709 zsys"}));
}

}  // namespace
}  // namespace osa::test
