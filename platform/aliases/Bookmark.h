// Bookmark data: what newer alias files keep in their data fork, with or without an alias record.
//
//   file   = "book" 0[4] "mark" 0[4] headerSize[4] …, or "book" size[4] version[4] headerSize[4] …
//   body   = tableOffset[4] …                behind the header, from whose end all offsets count
//   table  = size[4] magic[4] id[4] nextTable[4] count[4] { key[4] item[4] reserved[4] }
//   item   = length[4] type[4] value
// Everything is little-endian. Only what leads to a place is read.
#pragma once

#include <string>
#include <vector>

#include "platform/aliases/AliasRecord.h"
#include "platform/base/ByteReader.h"
#include "platform/base/Result.h"

namespace osa {

struct Bookmark {
    /// From the volume's root down. Names as in POSIX paths.
    std::vector<std::string> components;
    std::string volumePath;
    std::string volumeName;

    /// Whether the bytes begin like a bookmark.
    static bool isBookmark(ByteSpan bytes);
    /// mapReadErr for what is no bookmark, is damaged, or names no place.
    static Result<Bookmark> parse(ByteSpan bytes);

    /// The same place as a record; a file, as far as that can tell.
    AliasRecord record() const;
};

}  // namespace osa
