// Reading what alias files and links hold.
#include "platform/aliases/AliasContent.h"

#include <CoreServices/Finder.h>

#include <algorithm>
#include <optional>

#include "platform/aliases/Bookmark.h"
#include "platform/base/FourCC.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/resources/ResourceFork.h"

namespace osa {
namespace {

using Kind = AliasContent::Kind;

// A record's size field has 16 bits; private bytes may lie behind the record.
constexpr std::uint64_t kLargestRecord = 131072;
constexpr std::uint64_t kLargestBookmark = 1 << 20;

/// The file says that it is an alias: with bytes that cannot be read it leads nowhere.
AliasContent recordContent(ByteSpan bytes) {
    const auto record = AliasRecord::parse(bytes);
    return record.ok() ? AliasContent{Kind::record, {}, *record}
                       : AliasContent{Kind::damaged, {}, {}};
}

/// None when the fork holds no resource 'alis' 0.
Result<std::optional<AliasContent>> resourceContent(const Located& object) {
    std::optional<AliasContent> none;
    OSA_TRY(const auto stored, findResourceFork(object));
    if (!stored || stored->size() == 0) return none;
    OSA_TRY(const auto source, stored->open());
    const auto fork = ResourceFork::open(source);
    if (!fork.ok()) return none;
    const ResourceReference* const resource = fork->find(FourCC("alis"), 0);
    if (resource == nullptr) return none;
    OSA_TRY(CheckedRange range, fork->dataRange(*resource));
    range.length = std::min(range.length, kLargestRecord);
    OSA_TRY(const auto bytes, readRange(*source, range));
    return std::optional(recordContent(bytes));
}

AliasContent bookmarkContent(ByteSpan bytes) {
    const auto bookmark = Bookmark::parse(bytes);
    if (!bookmark.ok()) return {Kind::damaged, {}, {}};
    AliasContent content{Kind::bookmark, {}, bookmark->record()};
    content.record.isKindKnown = false;
    return content;
}

Result<RangeBytes> dataForkStart(const Located& object, std::uint64_t most) {
    OSA_TRY(const auto file, posix::openFile(object.path(), posix::Follow::no));
    return readRange(*file, {0, std::min(file->size(), most)});
}

}  // namespace

Result<AliasContent> aliasContent(const Located& object) {
    if (object.status.isSymbolicLink()) {
        OSA_TRY(std::string link, posix::readLink(object.path()));
        return AliasContent{Kind::link, std::move(link), {}};
    }
    if (!object.status.isRegular()) return AliasContent();
    OSA_TRY(const FinderInfoBytes info, findFinderInfo(object));
    if ((basicFinderInfo(info, false).fdFlags & kIsAlias) == 0) return AliasContent();
    OSA_TRY(auto content, resourceContent(object));
    if (content) return *std::move(content);
    const auto bytes = dataForkStart(object, kLargestBookmark);
    const bool isBookmark = bytes.ok() && Bookmark::isBookmark(*bytes);
    return isBookmark ? bookmarkContent(*bytes) : AliasContent();
}

Result<AliasContent> bareAliasContent(const Located& object) {
    if (!object.status.isRegular()) return AliasContent();
    OSA_TRY(const RangeBytes bytes, dataForkStart(object, kLargestBookmark));
    if (Bookmark::isBookmark(bytes)) return bookmarkContent(bytes);
    const ByteSpan all(bytes);
    AliasContent content =
        recordContent(all.first(std::min<std::size_t>(all.size(), kLargestRecord)));
    return content.kind == Kind::record ? content : AliasContent();
}

}  // namespace osa
