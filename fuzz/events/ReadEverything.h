// Every reader of descriptors, for the fuzz targets of the room.
#pragma once

#include <CoreServices/AEHelpers.h>
#include <CoreServices/MacMemory.h>

#include <cstdlib>

namespace osa::fuzz {

inline void require(bool condition) {
    if (!condition) std::abort();
}

/// Takes `desc` apart as far as `*budget` goes, which bounds the copies of nested descriptors.
inline void readItems(const AEDesc& desc, int depth, Size* budget) {
    SInt32 count = 0;
    if (AECountItems(&desc, &count) != 0 || depth == 0) return;
    for (SInt32 i = 1; i <= count && *budget > 0; ++i) {
        DescType type = 0;
        DescType told = 0;
        Size size = 0;
        Size whole = 0;
        char buffer[16];
        AEKeyword keyword = 0;
        if (AESizeOfNthItem(&desc, i, &type, &size) != 0) break;
        require(AEGetNthPtr(&desc, i, typeWildCard, &keyword, &told, buffer, 16, &whole) == 0);
        require(told == type && whole == size);
        *budget -= size + 16;
        AEDesc item;
        if (AEGetNthDesc(&desc, i, typeWildCard, nullptr, &item) != 0) continue;
        readItems(item, depth - 1, budget);
        AEDisposeDesc(&item);
        AESizeOfParam(&desc, keyword, nullptr, nullptr);
    }
}

inline void readEverything(const AEDesc& desc) {
    Size budget = 1 << 20;
    readItems(desc, 8, &budget);
    char buffer[8];
    for (const AEKeyword keyword : {keyEventClassAttr, keyMissedKeywordAttr, keySubjectAttr}) {
        AEGetAttributePtr(&desc, keyword, typeWildCard, nullptr, buffer, sizeof buffer, nullptr);
    }
    Handle text = nullptr;
    require(AEPrintDescToHandle(&desc, &text) == 0);
    for (Size i = 0; i + 1 < GetHandleSize(text); ++i) {
        require(static_cast<unsigned char>((*text)[i]) >= 0x20);
    }
    DisposeHandle(text);
}

}  // namespace osa::fuzz
