// Bookmark data: read, and made a record that can be written.
#include <cstdlib>

#include "platform/aliases/Bookmark.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes = osa::ByteReader(data, size).rest();
    const auto bookmark = osa::Bookmark::parse(bytes);
    if (!bookmark.ok()) return 0;
    if (!osa::Bookmark::isBookmark(bytes) || bookmark->components.empty()) std::abort();
    const osa::AliasRecord record = bookmark->record();
    // No component can step out of the path or hide in it.
    std::size_t slashes = 0;
    for (const char byte : record.pathOnVolume) slashes += byte == '/' ? 1 : 0;
    if (slashes + 1 != bookmark->components.size()) std::abort();
    const auto written = record.write();
    if (written.ok() && !osa::AliasRecord::parse(*written).ok()) std::abort();
    return 0;
}
