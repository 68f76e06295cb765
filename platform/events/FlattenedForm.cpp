// The form of descriptors outside the process: docs/formats/flattened-descriptors.md.
#include "platform/events/FlattenedForm.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "platform/events/NestedWalk.h"
#include "platform/events/TypeTable.h"

namespace osa {
namespace {

using Bytes = std::span<std::byte>;
using Kind = NestedWalk::Kind;

/// The flag of an item, and of the head, whose data are a block.
constexpr UInt32 kIsContainer = 2;

void write(std::byte* at, UInt32 value, std::endian order) {
    for (unsigned i = 0; i < 4; ++i) {
        const unsigned shift = order == std::endian::big ? 24 - 8 * i : 8 * i;
        at[i] = static_cast<std::byte>(value >> shift);
    }
}

void writeItemHeader(std::byte* at, const ItemView& item, UInt32 flags, std::endian order) {
    write(at + offsetof(ItemHeader, keyword), item.keyword, order);
    write(at + offsetof(ItemHeader, type), item.type, order);
    write(at + offsetof(ItemHeader, size), static_cast<UInt32>(item.data.size()), order);
    write(at + offsetof(ItemHeader, flags), flags, order);
}

/// Turns the fields of a block's header, which has been read already, from host order or into it.
void turnBlockHeader(Bytes block) {
    if constexpr (std::endian::native == std::endian::big) return;
    for (std::size_t at = 0; at < offsetof(BlockHeader, hints); at += 4) {
        std::ranges::reverse(block.subspan(at, 4));
    }
}

/// The same for the data of a type that is known. What has an impossible size stays as it is.
void turnData(DescType type, Bytes data) {
    const PlainType* const plain = plainTypeOf(type);
    if (std::endian::native == std::endian::big || plain == nullptr) return;
    const std::size_t fields = std::size_t{plain->fields[0]} + plain->fields[1];
    if (data.size() < fields || (data.size() - fields) % plain->unit != 0) return;
    for (const UInt8 width : plain->fields) {
        std::ranges::reverse(data.first(width));
        data = data.subspan(width);
    }
    if (plain->unit == 1) return;
    for (; !data.empty(); data = data.subspan(plain->unit)) {
        std::ranges::reverse(data.first(plain->unit));
    }
}

/// The part of `data` that the walk's view shows.
Bytes writable(ByteSpan view, Bytes data) {
    return data.subspan(static_cast<std::size_t>(view.data() - data.data()), view.size());
}

bool isZero(ByteSpan bytes) {
    return std::ranges::all_of(bytes, [](std::byte byte) { return byte == std::byte{0}; });
}

UInt32 flagsOf(const ItemView& item, ByteSpan allData) {
    return ByteReader(allData).sub(item.offset + offsetof(ItemHeader, flags), sizeof(UInt32)).u32();
}

ByteSpan paddingOf(const ItemView& item, ByteSpan allData) {
    const std::size_t end = item.offset + sizeof(ItemHeader) + item.data.size();
    return allData.subspan(end, paddedSize(item.data.size()) - item.data.size());
}

Bytes hintsOf(Bytes block) {
    return block.subspan(offsetof(BlockHeader, hints), sizeof BlockHeader::hints);
}

/// Whether a value that was put into host order would be flattened to the same bytes again.
bool comesBack(Kind kind, DescType type, ByteSpan data) {
    if (type == typeNull && !data.empty()) return false;
    return isFlattenedContainer(type, data) == (kind == Kind::open);
}

bool isItemSound(const NestedWalk::Step& step, ByteSpan allData) {
    const UInt32 flags = flagsOf(step.item, allData);
    return flags == (step.kind == Kind::open ? kIsContainer : 0) &&
           isZero(paddingOf(step.item, allData));
}

}  // namespace

bool isFlattenedContainer(DescType type, ByteSpan data) {
    return !data.empty() && shapeOf(type, data) != Shape::none;
}

Result<FlattenedHead> readFlattenedHead(ByteSpan bytes) {
    ByteReader reader(bytes);
    const FourCharCode magic = reader.fourCC();
    const UInt16 version = reader.u16();
    const UInt16 flags = reader.u16();
    const FlattenedHead head{reader.fourCC(), reader.u32(), flags == kIsContainer};
    const bool isKnown = magic == kFlattenedMagic && version == kFlattenedVersion &&
                         (flags == 0 || flags == kIsContainer);
    if (!reader.ok() || !isKnown || head.size > reader.remaining() || head.size > 0x7FFFFFFF) {
        return Failure(errAECorruptData);
    }
    return head;
}

void writeFlattenedHead(const FlattenedHead& head, std::byte* out) {
    const UInt32 flags = head.isContainer ? kIsContainer : 0;
    const UInt32 words[] = {kFlattenedMagic, UInt32{kFlattenedVersion} << 16 | flags, head.type,
                            head.size};
    for (const UInt32 word : words) {
        write(out, word, std::endian::big);
        out += sizeof word;
    }
}

OSStatus toFlattenedForm(DescType type, Bytes data) {
    NestedWalk walk(data, std::endian::native, [](const ItemView& item, ByteSpan) {
        return isFlattenedContainer(item.type, item.data);
    });
    NestedWalk::Step step;
    bool more = walk.start(type, isFlattenedContainer(type, data), step);
    for (; more; more = walk.next(step)) {
        if (step.kind == Kind::close) continue;
        const ItemView& item = step.item;
        const Bytes value = writable(item.data, data);
        if (item.type == typeNull && !value.empty()) return errAECorruptData;
        if (!step.isOutermost) {
            const UInt32 flags = step.kind == Kind::open ? kIsContainer : 0;
            writeItemHeader(data.data() + item.offset, item, flags, std::endian::big);
            std::ranges::fill(writable(paddingOf(item, data), data), std::byte{0});
        }
        if (step.kind == Kind::leaf) {
            turnData(item.type, value);
        } else {
            turnBlockHeader(value);
            std::ranges::fill(hintsOf(value), std::byte{0});
        }
    }
    return walk.status();
}

OSStatus fromFlattenedForm(const FlattenedHead& head, Bytes data) {
    NestedWalk walk(data, std::endian::big, [](const ItemView& item, ByteSpan allData) {
        return flagsOf(item, allData) == kIsContainer;
    });
    NestedWalk::Step step;
    bool more = walk.start(head.type, head.isContainer, step);
    for (; more; more = walk.next(step)) {
        if (step.kind == Kind::close) continue;
        const ItemView& item = step.item;
        const Bytes value = writable(item.data, data);
        if (!step.isOutermost) {
            if (!isItemSound(step, data)) return errAECorruptData;
            writeItemHeader(data.data() + item.offset, item, 0, std::endian::native);
        }
        if (step.kind == Kind::leaf) {
            turnData(item.type, value);
        } else {
            if (value.empty() || !isZero(hintsOf(value))) return errAECorruptData;
            turnBlockHeader(value);
        }
        if (!comesBack(step.kind, item.type, value)) return errAECorruptData;
    }
    return walk.status();
}

}  // namespace osa
