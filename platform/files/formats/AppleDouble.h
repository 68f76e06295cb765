// AppleDouble and AppleSingle files: a table of entries, each a run of bytes somewhere in the file.
//
//   offset  size
//        0     4  magic: 00 05 16 07 AppleDouble, 00 05 16 00 AppleSingle
//        4     4  version: 00 01 00 00 or 00 02 00 00
//        8    16  home file system in version 1, filler in version 2
//       24     2  number of entries
//       26  12 n  entries: ID, offset from the file's start, length (4 bytes each)
//
// Entries come in any order, may lie anywhere and often promise more bytes than there are.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/ByteSource.h"
#include "platform/files/formats/FinderInfoBytes.h"

namespace osa {

class AppleDouble {
  public:
    enum class Kind { appleDouble, appleSingle };
    enum EntryID : std::uint32_t {
        dataFork = 1,
        resourceFork = 2,
        realName = 3,
        comment = 4,
        fileInfo = 7,
        fileDates = 8,
        finderInfo = 9,
        macintoshInfo = 10,
    };

    struct Entry {
        std::uint32_t id = 0;
        CheckedRange range;  ///< cut to the bytes there are
    };

    /// Unix seconds; none where the file says "unknown" or nothing.
    struct Dates {
        std::optional<std::int64_t> created;
        std::optional<std::int64_t> modified;
        std::optional<std::int64_t> backedUp;
        std::optional<std::int64_t> accessed;
    };

    /// One extended attribute kept behind the Finder information.
    struct Attribute {
        std::string name;
        CheckedRange range;
    };

    /// paramErr: not of these formats. Reads the table only; the entries' bytes stay where they
    /// are.
    static Result<AppleDouble> parse(std::shared_ptr<const ByteSource> source);

    Kind kind() const { return kind_; }
    const std::vector<Entry>& entries() const { return entries_; }
    /// The first entry with the ID; null when there is none.
    const Entry* find(std::uint32_t id) const;

    /// The entry's bytes; an empty source when there is no such entry.
    std::shared_ptr<const ByteSource> content(std::uint32_t id) const;
    /// Blank when the file keeps none.
    Result<FinderInfoBytes> finderInfoContent() const;
    Result<Dates> dates() const;
    /// The whole file with other Finder information. Where the file has room for it, only those 32
    /// bytes differ. Else they are put behind the entry table and what lies there moves up; the
    /// attribute block, whose entries must not move, is in no such file. fileBoundsErr: the file
    /// would be too long for its offsets. (AppleDoubleWriting.cpp)
    Result<std::shared_ptr<const ByteSource>> withFinderInfo(const FinderInfoBytes& bytes) const;
    /// The whole file with another resource fork, which stays where it is; what lies behind it
    /// moves if its length changes. Where that cannot be, because it shares bytes with another
    /// entry or has attributes behind it, it goes to the file's end. fileBoundsErr as above.
    Result<std::shared_ptr<const ByteSource>> withResourceFork(
        const std::shared_ptr<const ByteSource>& fork) const;
    /// A new AppleDouble file with Finder information and, unless it is null or empty, a resource
    /// fork.
    static std::shared_ptr<const ByteSource> make(
        const FinderInfoBytes& bytes, const std::shared_ptr<const ByteSource>& fork = {});
    /// Empty when there is no attribute block or it is damaged at its start.
    Result<std::vector<Attribute>> attributes() const;

  private:
    static constexpr std::uint64_t kHeaderSize = 26;
    static constexpr std::uint64_t kEntrySize = 12;
    static constexpr std::uint32_t kDoubleMagic = 0x00051607;
    static constexpr std::uint32_t kSingleMagic = 0x00051600;
    static constexpr std::uint32_t kVersion1 = 0x00010000;
    static constexpr std::uint32_t kVersion2 = 0x00020000;

    using Source = std::shared_ptr<const ByteSource>;
    struct AttributeRow {
        std::size_t place;     ///< of its offset, in the block
        std::uint32_t offset;  ///< from the file's start
        std::uint32_t size;
        std::string name;
    };
    struct AttributeBlock {
        std::uint64_t start;
        RangeBytes bytes;
        std::vector<AttributeRow> rows;
    };

    std::uint64_t tableEnd() const { return kHeaderSize + entries_.size() * kEntrySize; }
    Source part(std::uint64_t from, std::uint64_t to) const;
    Result<std::optional<AttributeBlock>> attributeBlock() const;
    Result<bool> isAlone(const Entry& entry) const;
    Result<bool> hasAttributesBehind(std::uint64_t offset) const;
    Result<Source> withMovedAttributes(std::uint32_t distance) const;
    Result<Source> insertFinderInfo(const FinderInfoBytes& bytes) const;
    Result<Source> addResourceFork(const Source& fork) const;
    Result<Source> assemble(const std::vector<Entry>& rows, std::vector<Source> content) const;

    std::shared_ptr<const ByteSource> source_;
    Kind kind_ = Kind::appleDouble;
    std::uint32_t version_ = 0;
    std::vector<Entry> entries_;
};

}  // namespace osa
