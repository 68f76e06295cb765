// The resources of a file as lines of text, to be compared.
#pragma once

#include <OSA/ResourceListing.h>

#include "tests/support/Test.h"

namespace osa::test {

using Lines = std::vector<std::string>;

/// "TYPE id attributes 'name' data" of each resource in map order: data as stored, without the
/// attribute that means something in memory only.
inline Lines resourceLines(const std::string& path) {
    Lines lines;
    OSAResourceListRef list = nullptr;
    EXPECT_EQ(OSAResourceListOpen(path.c_str(), &list), noErr) << path;
    for (CFIndex i = 0; i < OSAResourceListGetCount(list); ++i) {
        OSAResourceInfo info;
        CFDataRef data = nullptr;
        EXPECT_EQ(OSAResourceListGetInfo(list, i, &info), noErr);
        EXPECT_EQ(OSAResourceListCopyData(list, i, false, &data), info.status);
        std::string line;
        for (const int shift : {24, 16, 8, 0}) line += static_cast<char>(info.type >> shift);
        line += ' ' + std::to_string(info.id) + ' ' + std::to_string(info.attributes & ~2);
        const std::string name(info.name + 1, info.name + 1 + info.name[0]);
        lines.push_back(line + (info.hasName ? " '" + name + "' " : " "));
        if (data == nullptr) continue;
        lines.back() += bytesOf(data);
        CFRelease(data);
    }
    OSAResourceListClose(list);
    return lines;
}

}  // namespace osa::test
